// The layouts of the logs in which drives keep how their self-tests ended.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "base/block.h"
#include "drives/facts.h"

namespace drives {

// The self-tests of a log, the last one first. nullopt if the log cannot be trusted: it is not
// whole, its checksum is wrong, or its index lies outside.
std::optional<std::vector<SelfTest>> ParseATASelfTests(std::span<const std::uint8_t> log);
std::optional<std::vector<SelfTest>> ParseNVMeSelfTests(std::span<const std::uint8_t> log);
// Of the page of self-test results.
std::optional<std::vector<SelfTest>> ParseSCSISelfTests(std::span<const std::uint8_t> page);

// The status of a self-test that runs, in words and as ATA drives have it.
inline constexpr std::string_view kSelfTestRuns = "in progress";
inline constexpr int kATASelfTestRuns = 15;

// A self-test with that status (0 to 15), as far as that says.
SelfTest ATASelfTestOf(int status);

// The status of the last self-test in S.M.A.R.T. data, and how much of one that runs is done.
struct SelfTestStatus {
  int status = 0;
  int percentDone = 0;
};
SelfTestStatus SelfTestStatusOf(const base::Block& data);

// Whether the S.M.A.R.T. data say that the drive has self-tests, as those of drives do that are too
// old to say so in their IDENTIFY DEVICE data.
bool HasSelfTestRoutine(const base::Block& data);

// How long the drive expects a test to take, in minutes. nullopt if the data do not say.
std::optional<int> SelfTestMinutes(const base::Block& data, bool isExtended);

// How much of the NVMe drive's self-test is done. nullopt if none runs.
std::optional<int> NVMeSelfTestPercent(std::span<const std::uint8_t> log);
std::optional<int> NVMeSelfTestMinutes(std::span<const std::uint8_t> controller, bool isExtended);

// Whether such a self-test found a fault, or could not go on because of one.
constexpr bool IsFailedATASelfTest(int status) { return status >= 3 && status <= 8; }

}  // namespace drives
