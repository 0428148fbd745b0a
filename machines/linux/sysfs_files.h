// Reads sysfs attributes: small files whose content the kernel makes when they are read. They may
// go away with their device at any time.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace machines {

// The bytes of the attribute, at most a page (4,096 bytes). No attribute that is read here is
// larger, and with the limit no endless file can hold the program up. nullopt if the attribute is
// not there or cannot be read. Does not wait, even if a pipe lies in its place.
std::optional<std::string> ReadFile(const std::filesystem::path& file);

// The attribute's text without the white space around it. Empty if it cannot be read.
std::string ReadText(const std::filesystem::path& file);

// The attribute as a decimal number without a sign, below 2^64. nullopt if it cannot be read or is
// no such number.
std::optional<std::uint64_t> ReadNumber(const std::filesystem::path& file);

// A device number, "8:16". nullopt as above.
std::optional<dev_t> ReadDeviceNumber(const std::filesystem::path& file);

}  // namespace machines
