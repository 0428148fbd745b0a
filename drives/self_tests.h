// The layouts of the logs in which drives keep how their self-tests ended.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "drives/facts.h"

namespace drives {

// The self-tests of a log, the last one first. nullopt if the log cannot be trusted: it is not
// whole, its checksum is wrong, or its index lies outside.
std::optional<std::vector<SelfTest>> ParseATASelfTests(std::span<const std::uint8_t> log);
std::optional<std::vector<SelfTest>> ParseNVMeSelfTests(std::span<const std::uint8_t> log);
// Of the page of self-test results.
std::optional<std::vector<SelfTest>> ParseSCSISelfTests(std::span<const std::uint8_t> page);

// How a self-test with that status (0 to 15) ended, as the ATA standard has it.
std::string_view ATASelfTestWords(int status);

// Whether such a self-test found a fault, or could not go on because of one.
constexpr bool IsFailedATASelfTest(int status) { return status >= 3 && status <= 8; }

}  // namespace drives
