// The reading of sysfs attributes: small files whose content the kernel makes up when
// they are read, and which may go away with their device at any time.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace machines {

// All bytes of the attribute, of one larger than a page (4,096 bytes) the first page: none that
// is read here is larger, and no endless file can hold the program up. nullopt if it is not
// there or cannot be read. Does not wait, even for a pipe in its place.
std::optional<std::string> ReadFile(const std::filesystem::path& file);

// The attribute's text without the white space around it; empty where it cannot be read.
std::string ReadText(const std::filesystem::path& file);

// Decimal, below 2^64, without a sign. nullopt if it cannot be read, or is no such number.
std::optional<std::uint64_t> ReadNumber(const std::filesystem::path& file);

// A device number, "8:16". nullopt as above.
std::optional<dev_t> ReadDeviceNumber(const std::filesystem::path& file);

}  // namespace machines
