#include "drives/self_tests.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>
#include <string>

#include "base/block.h"

namespace drives {
namespace {

using Bytes = std::span<const std::uint8_t>;
using SelfTests = std::vector<SelfTest>;

bool IsZeros(Bytes bytes) {
  return std::ranges::all_of(bytes, [](std::uint8_t byte) { return byte == 0; });
}

std::uint64_t LowFirst(Bytes bytes) {
  std::uint64_t number = 0;
  for (std::size_t i = bytes.size(); i-- > 0;) number = number << 8 | bytes[i];
  return number;
}

std::uint64_t HighFirst(Bytes bytes) {
  std::uint64_t number = 0;
  for (const std::uint8_t byte : bytes) number = number << 8 | byte;
  return number;
}

// A status of a log: its words, and whether a test passed that ended so.
struct Ending {
  std::string_view words;
  std::optional<bool> passed = {};
};

// A status beyond the table is reserved.
template <std::size_t kSize>
Ending EndingOf(const std::array<Ending, kSize>& endings, int status) {
  const auto index = static_cast<std::size_t>(status);
  return index < kSize ? endings.at(index) : Ending{"an unknown status"};
}

constexpr std::array kATAEndings = {Ending{"completed without error", true},
                                    Ending{"aborted by the host"},
                                    Ending{"interrupted by the host with a reset"},
                                    Ending{"a fatal or unknown error", false},
                                    Ending{"completed: an unknown element failed", false},
                                    Ending{"completed: the electrical element failed", false},
                                    Ending{"completed: the servo or seek element failed", false},
                                    Ending{"completed: the read element failed", false},
                                    Ending{"completed: handling damage suspected", false}};

std::string_view ATAType(std::uint8_t number) {
  constexpr std::array<std::string_view, 5> kTypes = {"off-line", "short", "extended", "conveyance",
                                                      "selective"};
  constexpr std::uint8_t kUncaptive = 0x7F;
  const std::size_t index = number & kUncaptive;
  return index < kTypes.size() ? kTypes.at(index) : "vendor-specific";
}

Ending ATAEnding(int status) {
  return status == kATASelfTestRuns ? Ending{kSelfTestRuns} : EndingOf(kATAEndings, status);
}

SelfTest ParseATADescriptor(Bytes descriptor) {
  constexpr int kReadError = 7;
  constexpr std::uint64_t kNoSector = 0xFFFFFFFF;
  const int status = descriptor[1] >> 4;
  SelfTest test{ATAType(descriptor[0])};
  test.status = std::string(ATAEnding(status).words);
  test.passed = ATAEnding(status).passed;
  test.powerOnHours = LowFirst(descriptor.subspan(2, 2));
  const std::uint64_t sector = LowFirst(descriptor.subspan(5, 4));
  if (status == kReadError && sector != kNoSector) test.lba = sector;
  return test;
}

constexpr std::array kNVMeEndings = {Ending{"completed without error", true},
                                     Ending{"aborted by a self-test command"},
                                     Ending{"aborted by a controller reset"},
                                     Ending{"aborted as a namespace was removed"},
                                     Ending{"aborted by a format command"},
                                     Ending{"a fatal or unknown error", false},
                                     Ending{"completed: an unknown segment failed", false},
                                     Ending{"completed: one or more segments failed", false},
                                     Ending{"aborted for an unknown reason"},
                                     Ending{"aborted by a sanitize operation"}};

std::string_view NVMeType(int code) {
  return code == 1 ? "short" : code == 2 ? "extended" : code == 14 ? "vendor-specific" : "";
}

SelfTest ParseNVMeResult(Bytes result) {
  constexpr std::uint8_t kHasSector = 0x02;
  constexpr int kKnownSegment = 7;
  const int status = result[0] & 0x0F;
  const Ending ending = EndingOf(kNVMeEndings, status);
  SelfTest test{NVMeType(result[0] >> 4), std::string(ending.words), ending.passed};
  if (status == kKnownSegment) test.status += ", the first is " + std::to_string(result[1]);
  test.powerOnHours = LowFirst(result.subspan(4, 8));
  if ((result[2] & kHasSector) != 0) test.lba = LowFirst(result.subspan(16, 8));
  return test;
}

constexpr std::array kSCSIEndings = {Ending{"completed without error", true},
                                     Ending{"aborted by the host"},
                                     Ending{"aborted by another command"},
                                     Ending{"an unknown error", false},
                                     Ending{"completed: an unknown segment failed", false},
                                     Ending{"completed: the first segment failed", false},
                                     Ending{"completed: the second segment failed", false},
                                     Ending{"completed: another segment failed", false}};

std::string_view SCSIType(int code) {
  constexpr std::array<std::string_view, 7> kTypes = {"", "short", "extended", "",
                                                      "", "short", "extended"};
  return static_cast<std::size_t>(code) < kTypes.size() ? kTypes.at(static_cast<std::size_t>(code))
                                                        : "";
}

SelfTest ParseSCSIResult(Bytes result) {
  constexpr std::uint64_t kNoSector = ~std::uint64_t{0};
  const int status = result[0] & 0x0F;
  const Ending ending =
      status == kATASelfTestRuns ? Ending{kSelfTestRuns} : EndingOf(kSCSIEndings, status);
  SelfTest test{SCSIType(result[0] >> 5), std::string(ending.words), ending.passed};
  if (status != kATASelfTestRuns) test.powerOnHours = HighFirst(result.subspan(2, 2));
  const std::uint64_t sector = HighFirst(result.subspan(4, 8));
  if (ending.passed == false && sector != kNoSector) test.lba = sector;
  return test;
}

}  // namespace

SelfTest ATASelfTestOf(int status) {
  const Ending ending = ATAEnding(status);
  return {"", std::string(ending.words), ending.passed};
}

SelfTestStatus SelfTestStatusOf(const base::Block& data) {
  constexpr std::size_t kStatus = 363;  // and in the low half what is left of the test, of 10
  return {data[kStatus] >> 4, 100 - 10 * std::min(data[kStatus] & 0x0F, 10)};
}

bool HasSelfTestRoutine(const base::Block& data) {
  constexpr std::size_t kCapabilities = 367;
  constexpr std::uint8_t kSelfTest = 0x10;
  return (data[kCapabilities] & kSelfTest) != 0;
}

std::optional<int> SelfTestMinutes(const base::Block& data, bool isExtended) {
  constexpr std::size_t kShort = 372;
  constexpr std::size_t kExtended = 373;
  constexpr std::size_t kLongExtended = 375;
  constexpr int kLong = 0xFF;
  int minutes = data[isExtended ? kExtended : kShort];
  if (isExtended && minutes == kLong) minutes = data[kLongExtended] | data[kLongExtended + 1] << 8;
  return minutes == 0 ? std::nullopt : std::optional(minutes);
}

std::optional<int> NVMeSelfTestPercent(Bytes log) {
  if (log.size() < 2 || (log[0] & 0x0F) == 0) return std::nullopt;
  return log[1] & 0x7F;
}

// The standard has a short test end within two minutes.
std::optional<int> NVMeSelfTestMinutes(Bytes controller, bool isExtended) {
  constexpr std::size_t kMinutes = 316;
  if (!isExtended) return 2;
  if (controller.size() < kMinutes + 2) return std::nullopt;
  const auto minutes = static_cast<int>(LowFirst(controller.subspan(kMinutes, 2)));
  return minutes == 0 ? std::nullopt : std::optional(minutes);
}

// The index counts from 1, and 0 means that there was no test. The descriptors are a ring.
std::optional<SelfTests> ParseATASelfTests(Bytes log) {
  constexpr std::size_t kIndex = 508;
  constexpr std::size_t kFirst = 2;
  constexpr std::size_t kSize = 24;
  constexpr std::size_t kCount = 21;
  if (log.size() < base::kBlockSize) return std::nullopt;
  const unsigned sum = std::accumulate(log.begin(), log.end(), 0U);
  const std::size_t index = log[kIndex];
  if ((sum & 0xFF) != 0 || index > kCount) return std::nullopt;
  SelfTests tests;
  for (std::size_t i = 0; index > 0 && i < kCount; i++) {
    const std::size_t place = (index + kCount - 1 - i) % kCount;
    const Bytes descriptor = log.subspan(kFirst + place * kSize, kSize);
    if (!IsZeros(descriptor)) tests.push_back(ParseATADescriptor(descriptor));
  }
  return tests;
}

std::optional<SelfTests> ParseNVMeSelfTests(Bytes log) {
  constexpr std::size_t kFirst = 4;
  constexpr std::size_t kSize = 28;
  constexpr std::size_t kCount = 20;
  constexpr int kUnused = 15;
  if (log.size() < kFirst + kCount * kSize) return std::nullopt;
  SelfTests tests;
  for (std::size_t i = 0; i < kCount; i++) {
    const Bytes result = log.subspan(kFirst + i * kSize, kSize);
    const bool isUsed = (result[0] & 0x0F) != kUnused && !IsZeros(result);
    if (isUsed) tests.push_back(ParseNVMeResult(result));
  }
  return tests;
}

// Each parameter has a header of 4 bytes. One of zeros is of no test.
std::optional<SelfTests> ParseSCSISelfTests(Bytes page) {
  constexpr std::size_t kHeaderSize = 4;
  constexpr std::size_t kResultSize = 16;
  if (page.size() < kHeaderSize) return std::nullopt;
  SelfTests tests;
  page = page.subspan(kHeaderSize);
  for (; page.size() >= kHeaderSize + kResultSize; page = page.subspan(kHeaderSize + kResultSize)) {
    const Bytes result = page.subspan(kHeaderSize, kResultSize);
    if (!IsZeros(result)) tests.push_back(ParseSCSIResult(result));
  }
  return tests;
}

}  // namespace drives
