// The self-test log and the device statistics of ATA drives: what they say, and what they take the
// place of.
#include <algorithm>
#include <numeric>

#include "tests/support.h"
#include "tools/recorded_host.h"
#include "views/field_texts.h"
#include "views/views.h"

namespace test {

struct Statistic {
  std::uint8_t page;
  std::size_t offset;
  std::uint64_t value;
  std::uint8_t flags = 0xC0;
};

// A page for each statistic.
Data Statistics(const std::vector<Statistic>& statistics) {
  Data pages;
  for (const auto& [page, offset, value, flags] : statistics) {
    Data bytes(512);
    bytes[0] = 1;
    bytes[2] = page;
    for (std::size_t i = 0; i < 7; i++)
      bytes[offset + i] = static_cast<std::uint8_t>(value >> 8 * i);
    bytes[offset + 7] = flags;
    pages.insert(pages.end(), bytes.begin(), bytes.end());
  }
  return pages;
}

struct LoggedTest {
  std::uint8_t type, status, hours;
  std::uint32_t sector = 0xFFFFFFFF;
};

// The log of these tests, whose last one is at that index.
Data SelfTests(const std::vector<LoggedTest>& tests, std::uint8_t index, std::uint8_t damage = 0) {
  Data log(512);
  log[0] = 1;
  for (std::size_t i = 0; i < tests.size(); i++) {
    const auto& [type, status, hours, sector] = tests[i];
    const auto at = log.begin() + 2 + 24 * static_cast<std::ptrdiff_t>(i);
    const Data descriptor = {type, static_cast<std::uint8_t>(status << 4), hours, 1, 0};
    std::copy(descriptor.begin(), descriptor.end(), at);
    for (int byte = 0; byte < 4; byte++)
      at[5 + byte] = static_cast<std::uint8_t>(sector >> 8 * byte);
  }
  log[508] = index;
  log[511] = static_cast<std::uint8_t>(-std::accumulate(log.begin(), log.end(), 0) + damage);
  return log;
}

// Attributes 5 (3 sectors), 9 (100 hours), 187 (4 errors) and 194 (65 °C), of a disk of 100
// sectors.
drives::Host HostOf(const Data& statistics, const Data& selfTests = {}, std::uint8_t status = 0) {
  DriveAnswers answers = HealthyAnswers();
  const std::vector<BlockEntry> attributes = {
      {5, 0, 90, 90, 3}, {9, 0, 90, 90, 100}, {187, 0, 90, 90, 4}, {194, 0, 90, 90, 65}};
  answers.data.bytes = BlockOf(attributes);
  answers.data.bytes.resize(512);
  answers.data.bytes[363] = static_cast<std::uint8_t>(status << 4);
  answers.thresholds.bytes = BlockOf({{5, 1}, {9, 1}, {187, 1}, {194, 1}});
  answers.date = Date(0);
  if (!statistics.empty()) answers.logs["Statistics"] = statistics;
  if (!selfTests.empty()) answers.logs["SelfTestLog"] = selfTests;
  return tools::ReadRecordedHost({.roots = {AhciDevice(DriveOf(answers), "disk0", 51200)}},
                                 Date(0));
}

TEST(Statistics, TakeThePlaceOfRawValues) {
  const std::string kErrors = "4 uncorrectable errors";
  const std::string kHot = "; 65 °C";
  const std::string kAll = "3 sectors reallocated; " + kErrors + kHot;
  const std::tuple<std::vector<Statistic>, std::string, unsigned> kCases[] = {
      {{}, "caution: " + kAll, 100},
      {{{1, 16, 5000}}, "caution: " + kAll, 5000},
      {{{1, 16, 5000, 0x80}}, "caution: " + kAll, 100},  // not valid
      {{{1, 16, 5000, 0x40}}, "caution: " + kAll, 100},  // not supported
      {{{1, 16, 262'801}}, "caution: " + kAll, 100},     // more than 30 years
      {{{3, 32, 0}}, "caution: " + kErrors + kHot, 100},
      {{{3, 32, 100}}, "caution: 100 sectors reallocated; " + kErrors + kHot, 100},
      {{{3, 32, 101}}, "caution: " + kAll, 100},      // more than the disk has
      {{{3, 32, 0, 0xE0}}, "caution: " + kAll, 100},  // in percent
      {{{3, 32, 0}, {4, 8, 0}, {5, 8, 30}}, "OK", 100},
      {{{3, 32, 0}, {4, 8, 1}, {5, 8, 0xE2}}, "caution: 1 uncorrectable error", 100},
      {{{3, 32, 0}, {4, 8, 0}, {5, 8, 54}, {5, 88, 55}}, "OK", 100},
      {{{3, 32, 0}, {4, 8, 0}, {5, 88, 65}}, "hot: 65 °C, limit 65 °C", 100},
      {{{3, 32, 0}, {4, 8, 0}, {5, 88, 66}}, "OK", 100},
      {{{3, 32, 0}, {4, 8, 0}, {5, 8, 30}, {7, 8, 99}}, "OK", 100},
      {{{3, 32, 0}, {4, 8, 0}, {5, 8, 30}, {7, 8, 100}}, "worn: 100 % of its life used", 100}};
  for (const auto& [statistics, health, hours] : kCases) {
    const drives::Host host = HostOf(Statistics(statistics));
    EXPECT_EQ(views::HealthText(health::HealthOf(host.drives.at(0))), health);
    EXPECT_EQ(host.drives.at(0).recorded->powerOnHours, hours);
  }
}

TEST(Statistics, AreShownBesideAttributes) {
  const drives::Host host = HostOf(
      Statistics({{1, 24, 2'000'000'000'000}, {3, 32, 7}, {5, 32, 0xFF}, {6, 24, 0xFFFFFFFF}}));
  const std::string json = views::JsonText(host, "");
  for (const char* part :
       {R"("statistics":{"sectors_written":2000000000000,"reallocated_sectors":7,)"
        R"("highest_temperature_celsius":-1,"crc_errors":4294967295})",
        R"("reallocated_sectors":7,"capacity)", R"("raw":3)"}) {
    EXPECT_NE(json.find(part), std::string::npos) << part << json;
  }
  const std::string table = Replaced(views::TableText(host, {}), "(  +)", " ");
  EXPECT_NE(table.find("\nSectors written 2000000000000 (1.02 PB) OK\n"
                       "Reallocated sectors 7 caution\n"
                       "Highest temperature -1 °C OK\n"),
            std::string::npos)
      << table;
  EXPECT_NE(views::MetricsText(host).find("smartprobe_drive_written_bytes{device=\"/dev/rdisk0\""),
            std::string::npos);
}

TEST(SelfTests, TellHowTheLastOnesEnded) {
  const LoggedTest kPassed = {1, 0, 1};
  const LoggedTest kFailed = {2, 7, 2, 4711};
  const LoggedTest kAborted = {1, 1, 3};
  std::vector<LoggedTest> ring(21, kPassed);
  ring[20] = kFailed;
  const std::string kReason = "; last self-test failed: the read element failed at sector 4711";
  const std::string kPassedText =
      R"({"type":"short","status":"completed without error","passed":true,"power_on_hours":257})";
  const std::string kFailedText =
      R"({"type":"extended","status":"completed: the read element failed","passed":false,)"
      R"("power_on_hours":258,"lba":4711})";
  const std::tuple<Data, int, std::string, std::string> kCases[] = {
      {{}, 0, "", ""},
      {SelfTests({}, 0), 0, "", ""},
      {SelfTests({kFailed, kPassed}, 2), 0, "", kPassedText},
      {SelfTests({kPassed, kFailed}, 2), 7, kReason, kFailedText},
      // An aborted one takes nothing back, nor does one that runs.
      {SelfTests({kFailed, kAborted}, 2), 1, kReason + "; last self-test aborted",
       R"({"type":"short","status":"aborted by the host","power_on_hours":259})"},
      {SelfTests({kFailed}, 1), 15, kReason + "; self-test running", kFailedText},
      // The log does not have what the data say.
      {SelfTests({kPassed}, 1), 5, "; last self-test failed: the electrical element failed",
       kPassedText},
      // The index goes around.
      {SelfTests(ring, 21), 0, kReason, kFailedText},
      {SelfTests(ring, 22), 0, "; self-test log not readable", ""},
      {SelfTests({kFailed}, 1, 1), 0, "; self-test log not readable", ""},
      {Data(511), 0, "; self-test log not readable", ""}};
  for (const auto& [log, status, reason, last] : kCases) {
    const drives::Host host =
        HostOf(Statistics({{3, 32, 1}}), log, static_cast<std::uint8_t>(status));
    const std::string health = views::HealthText(health::HealthOf(host.drives.at(0)));
    EXPECT_EQ(health, "caution: 1 sector reallocated; 4 uncorrectable errors" + reason + "; 65 °C");
    const std::string json = views::JsonText(host, "");
    const std::size_t at = json.find("\"last_self_test\":");
    EXPECT_EQ(at == std::string::npos ? "" : json.substr(at + 17, last.size()), last);
  }
  EXPECT_EQ(HostOf({}, SelfTests(ring, 20)).drives.at(0).recorded->selfTests.back().lba, 4711);
}

}  // namespace test
