// What the recorder keeps of earlier answers, and what is made of it: growth, drives that are gone,
// and what has changed since an older recording.
#include "tools/history.h"

#include <algorithm>

#include "machines/entries/device_entries.h"
#include "machines/recorded/mask_serials.h"
#include "machines/recorded/property_list.h"
#include "machines/recorded/read_recording.h"
#include "machines/recorded/write_recording.h"
#include "tests/support.h"
#include "tools/recorded_host.h"
#include "views/field_texts.h"
#include "views/views.h"

namespace test {

using platform::Machine;
using std::chrono::days;
using std::chrono::hours;
using std::chrono::sys_seconds;

constexpr sys_seconds kStart = std::chrono::sys_days(std::chrono::year(2025) / 1 / 1) + hours(1);

// A drive with so many reallocated sectors, pending sectors and CRC errors.
struct Counts {
  std::uint64_t reallocated = 0, pending = 0, crc = 0;
};

DriveAnswers AnswersOf(sys_seconds date, Counts counts, char serial = 'A') {
  DriveAnswers answers = HealthyAnswers();
  answers.data.bytes = BlockOf({{5, 0, 100, 100, counts.reallocated},
                                {197, 0, 100, 100, counts.pending},
                                {199, 0, 100, 100, counts.crc}});
  answers.thresholds.bytes = BlockOf({{5, 1}, {197, 1}, {199, 1}});
  std::fill_n(answers.identify.bytes.begin() + 20, 20, static_cast<std::uint8_t>(serial));
  answers.date = date;
  return answers;
}

Machine Recording(const std::vector<DriveAnswers>& drives) {
  Machine machine = {.roots = {{"Root", "Class"}}};
  for (const DriveAnswers& answers : drives) {
    machine.roots[0].children.push_back(
        AhciDevice(DriveOf(answers), "disk" + std::to_string(machine.roots[0].children.size())));
  }
  return machine;
}

// As the recorder writes it and reads it again.
Machine Written(const Machine& machine, bool isMasked = false) {
  Property listing = machines::ListingOf(
      machine, [](const Entry& entry) { return machines::RecordDrive(entry.drive()); });
  if (isMasked) machines::MaskSerials(listing);
  return machines::ReadRecording(machines::WritePropertyList(listing));
}

// The recording of `machine` at that time, which replaces `before`.
Machine Next(const Machine& before, Machine machine, sys_seconds now, bool isMasked = false) {
  tools::AddHistory(machine, before, {now, days(400), isMasked});
  return Written(machine, isMasked);
}

TEST(History, HasADayEachForAMonthAndAWeekEachBeforeThat) {
  Machine recording;
  sys_seconds now = kStart;
  for (int count = 0; count < 2 * 500; count++) {
    now = kStart + hours(12 * count);
    const auto pending = static_cast<std::uint64_t>(count);
    Machine next = Recording({AnswersOf(now, {.pending = pending})});
    tools::AddHistory(next, recording, {now, days(400)});
    recording = next;
  }
  recording = Written(recording);
  const std::vector<DriveAnswers>& earlier = recording.roots[0].children[0].earlier;
  std::vector<sys_seconds> dates;
  dates.reserve(earlier.size());
  for (const DriveAnswers& answers : earlier) dates.push_back(*answers.date);
  ASSERT_TRUE(std::ranges::is_sorted(dates));
  EXPECT_LE(now - dates.front(), days(400));
  EXPECT_GE(now - dates.front(), days(400 - 8));
  const auto isOld = [&](sys_seconds date) {
    return std::chrono::floor<days>(now) - std::chrono::floor<days>(date) > days(31);
  };
  for (std::size_t i = 1; i + 1 < dates.size(); i++) {
    const days usual(isOld(dates[i + 1]) ? 7 : 1);  // the last week is not full
    EXPECT_TRUE(isOld(dates[i]) != isOld(dates[i + 1]) || dates[i] - dates[i - 1] == usual ||
                isOld(dates[i - 1]) != isOld(dates[i]))
        << i;
    EXPECT_EQ(dates[i] - std::chrono::floor<days>(dates[i]), hours(13)) << "the last of its day";
  }
  EXPECT_GE(dates.size(), 31U + 52);
  EXPECT_LE(dates.size(), 31U + 54);
  EXPECT_FALSE(earlier.front().identify.succeeds) << "never changes";
}

TEST(History, IsOfTheSameDriveWhateverBecomesOfIt) {
  const auto at = [](int day) { return kStart + days(day); };
  const auto drive = [&](char serial, int day) { return AnswersOf(at(day), {}, serial); };
  // "2 gone": how many earlier answers each device has.
  const auto told = [](const Machine& recording) {
    std::string text;
    for (const Entry& device : recording.roots[0].children) {
      text += std::to_string(device.earlier.size()) + (device.goneSince ? " gone, " : ", ");
    }
    return text;
  };
  Machine recording = Next({}, Recording({drive('A', 0), drive('B', 0)}), at(0));
  EXPECT_EQ(told(recording), "0, 0, ");
  recording = Next(recording, Recording({drive('B', 1), drive('A', 1)}), at(1));
  EXPECT_EQ(told(recording), "1, 1, ") << "they have changed places";
  DriveAnswers failing = drive('A', 2);
  failing.whyNotOpened = "it fails";
  recording = Next(recording, Recording({failing, drive('B', 2)}), at(2));
  EXPECT_EQ(told(recording), "2, 2, ") << "one is not read, and loses nothing";
  recording = Next(recording, Recording({drive('B', 3)}), at(3));
  EXPECT_EQ(told(recording), "3, 1 gone, ");
  EXPECT_EQ(recording.roots[0].children[1].goneSince, at(3));
  EXPECT_EQ(ReportOf(recording).find("GetSMARTFailed"), std::string::npos) << "no pass matches it";
  recording = Next(recording, Recording({drive('B', 34)}), at(34));
  EXPECT_EQ(told(recording), "3, 1 gone, ");
  const Machine back = Next(recording, Recording({drive('A', 35), drive('B', 35)}), at(35));
  EXPECT_EQ(told(back), "2, 3, ");
  recording = Next(recording, Recording({drive('B', 35)}), at(35));
  EXPECT_EQ(told(recording), "3, ") << "it is forgotten";
  // A sleeper keeps its answers; two drives of one serial number cannot be told apart.
  recording = Next(recording, Recording({drive('B', 35), drive('C', 36), drive('C', 36)}), at(36));
  EXPECT_EQ(told(recording), "3, 0, 0, ");
  recording = Next(recording, Recording({drive('C', 37), drive('C', 37)}), at(37));
  EXPECT_EQ(told(recording), "0, 0, 3 gone, ");
  // One that does not tell its names has those of the kernel, as far as it knows any.
  Machine unnamed = Recording({drive('A', 1)});
  Entry& device = unnamed.roots[0].children[0];
  device.drive = DriveOf(NotOpened("it hangs"));
  device.properties["Device Characteristics"] = Dict({{"Product Name", Text("MOD")}});
  recording = Next(Recording({drive('A', 0)}), unnamed, at(1));
  EXPECT_EQ(told(recording), "1, ");
  EXPECT_EQ(tools::ReadRecordedHost(recording, at(1)).notRead.at(0).serial, std::string(20, 'A'));
  device.drive = {};  // not asked any more, or without an answer
  recording = Next(recording, unnamed, at(2));
  EXPECT_EQ(told(recording), "0, 0 gone, ") << "without a drive there are no names to go by";
  // A clock that is wrong once costs nothing, and neither does a drive that goes by it.
  Machine years = Next({}, Recording({drive('A', 0), drive('B', 0)}), at(0));
  for (const int day : {1, 2, 3}) {
    years = Next(years, Recording({drive('A', day), drive('B', day)}), at(day));
  }
  years = Next(years, Recording({drive('A', -400), drive('B', -400)}), at(-400));
  EXPECT_EQ(told(years), "4, 4, ");
  years = Next(years, Recording({drive('A', 5000)}), at(5000));
  EXPECT_EQ(told(years), "4, 4 gone, ");
  years = Next(years, Recording({drive('A', 4)}), at(4));
  EXPECT_EQ(told(years), "4, 4 gone, ");
  EXPECT_EQ(years.roots[0].children[1].goneSince, at(4));
  // Masked serial numbers are all alike, but one drive of a product is known.
  Machine masked = Next({}, Recording({drive('A', 0)}), at(0), true);
  masked = Next(masked, Recording({drive('A', 1)}), at(1), true);
  EXPECT_EQ(told(masked), "1, ");
  EXPECT_EQ(told(Next(masked, Recording({drive('B', 2)}), at(2))), "0, ") << "whose were they?";
  masked = Next(masked, Recording({drive('A', 2), drive('B', 2)}), at(2), true);
  EXPECT_EQ(told(masked), "0, 0, ");
}

// How a drive is judged today, after these answers of so many days ago.
std::string Judged(const std::vector<std::pair<int, Counts>>& earlier, Counts now) {
  const sys_seconds today = kStart + days(100);
  Machine machine = Recording({AnswersOf(today, now)});
  for (const auto& [ago, counts] : earlier) {
    machine.roots[0].children[0].earlier.push_back(AnswersOf(today - days(ago), counts));
  }
  const drives::Host host = tools::ReadRecordedHost(Written(machine), today);
  return views::HealthText(health::HealthOf(host.drives.at(0)));
}

TEST(History, TellsWhatGrewWithinAWeek) {
  const std::string kSoon = "; failing soon: replace it";
  const std::tuple<std::vector<std::pair<int, Counts>>, Counts, std::string> kCases[] = {
      {{}, {.reallocated = 9}, "caution: 9 sectors reallocated"},
      {{{8, {}}}, {.reallocated = 9}, "caution: 9 sectors reallocated"},
      {{{8, {}}, {7, {7}}}, {9}, "caution: 9 sectors reallocated, 2 of them within 7 days"},
      {{{7, {9}}, {1, {9}}}, {9}, "caution: 9 sectors reallocated"},
      {{{3, {9, 5}}, {2, {9, 0}}},
       {9, 3},
       "caution: 3 sectors pending, 3 of them within 7 days, 9 reallocated"},
      {{{3, {9, 5}}}, {9, 3}, "caution: 9 sectors reallocated, 3 pending"},
      {{}, {199}, "caution: 199 sectors reallocated"},
      {{}, {200}, "caution: 200 sectors reallocated" + kSoon},
      {{{5, {10}}}, {39}, "caution: 39 sectors reallocated, 29 of them within 7 days"},
      {{{5, {10}}}, {40}, "caution: 40 sectors reallocated, 30 of them within 7 days" + kSoon},
      {{{5, {0, 0, 70}}}, {0, 0, 70}, "OK"},
      {{{8, {}}}, {0, 0, 70}, "OK"},
      {{{5, {0, 0, 69}}}, {0, 0, 70}, "caution: 1 CRC error within 7 days: check the cable"}};
  for (const auto& [earlier, now, health] : kCases) EXPECT_EQ(Judged(earlier, now), health);
}

TEST(History, IsInEveryForm) {
  const sys_seconds now = kStart + days(3);
  Machine recording = Recording({AnswersOf(kStart, {7}, 'A'), AnswersOf(kStart, {}, 'B')});
  recording = Next(recording, Recording({AnswersOf(now, {9, 1, 4}, 'A')}), now);
  const drives::Host host = tools::ReadRecordedHost(recording, now);
  const std::string gone = "gone since 2025-01-04: EXAMPLE 250 BBBBBBBBBBBBBBBBBBBB";
  const std::string row = "(+2 in 7 days)";
  const std::tuple<std::string, std::string> kForms[] = {
      {views::TableText(host, {.columns = 200}), gone},
      {views::TableText(host, {.columns = 200}), row},
      {views::BriefText(host, {.columns = 200}), gone},
      {views::PageText(host, now), gone},
      {views::PageText(host, now), row},
      {views::PageText(host, now), "aria-label=\"Lost sectors from 7 to 10\""},
      {views::PageText(host, now), "<h1>Drives: 1 gone, 1 caution</h1>"},
      {views::AdviceText(host), "If nobody has taken out "},
      {views::MetricsText(host), "\nsmartprobe_drives_gone 1\n"},
      {views::MetricsText(host),
       R"({product="EXAMPLE 250",serial="BBBBBBBBBBBBBBBBBBBB",grade="gone"} 1)"},
      {views::Check(host, {}).summary, "smartprobe WARNING: " + gone + "; caution: "},
      {views::JsonText(host, ""),
       R"("history":[{"unix_time":1735693200,"reallocated_sectors":7,"pending_sectors":0},)"
       R"({"unix_time":1735952400,"reallocated_sectors":9,"pending_sectors":1}])"},
      {views::JsonText(host, ""),
       R"("gone":[{"product":"  EXAMPLE 250 ","serial":"BBBBBBBBBBBBBBBBBBBB","since_unix_time":1735952400,)"
       R"("health":"OK","reasons":[]}])"}};
  for (const auto& [form, text] : kForms) {
    EXPECT_NE(form.find(text), std::string::npos) << text << "\n" << form;
  }
  // One that failed before it went is critical, also if it could not be read any more.
  DriveAnswers failing = AnswersOf(kStart, {}, 'B');
  failing.exceeded = true;
  recording = Recording({failing});
  failing.whyNotOpened = "it hangs";
  recording = Next(recording, Recording({failing}), kStart + days(1));
  recording = Next(recording, Recording({AnswersOf(now, {}, 'A')}), now);
  const auto check = views::Check(tools::ReadRecordedHost(recording, now), {});
  EXPECT_EQ(check.verdict, health::Verdict::kCritical) << check.summary;
}

std::string Changes(const Machine& before, const Machine& now) {
  const drives::Host old = tools::ReadRecordedHost(before, kStart);
  return views::ChangesText(old, tools::ReadRecordedHost(now, kStart));
}

TEST(Changes, AreToldALineEachTheWorstFirst) {
  const auto drive = [](char serial, Counts counts = {}, bool isFailing = false) {
    DriveAnswers answers = AnswersOf(kStart, counts, serial);
    answers.exceeded = isFailing;
    return answers;
  };
  const auto unread = [&](char serial) {
    DriveAnswers answers = drive(serial);
    answers.whyNotOpened = "it hangs";
    return answers;
  };
  const auto name = [](char serial) { return "EXAMPLE 250 " + std::string(20, serial); };
  using Drives = std::vector<DriveAnswers>;
  const std::tuple<Drives, Drives, std::string> kCases[] = {
      {{drive('A'), drive('B')}, {drive('B'), drive('A')}, ""},
      {{}, {}, ""},
      {{drive('A'), drive('B')}, {drive('A')}, "gone: " + name('B') + ": before: OK\n"},
      {{drive('A')}, {drive('A'), drive('B')}, "new: " + name('B') + ": OK\n"},
      {{drive('A'), drive('B')},
       {unread('A'), drive('B', {}, true)},
       "worse: " + name('B') +
           ": failing: the drive's own self-assessment: failed (before: OK)\n"
           "no longer readable: " +
           name('A') + ": it hangs\n"},
      {{unread('A')}, {drive('A')}, "readable again: " + name('A') + ": OK\n"},
      {{unread('A')}, {unread('A')}, ""},
      {{drive('A', {3})}, {drive('A')}, "better: " + name('A') + ": OK (before: caution)\n"},
      {{drive('A', {3})},
       {drive('A', {4, 1, 2})},
       "grew: " + name('A') +
           ": 4 sectors reallocated, before 3\n"
           "grew: " +
           name('A') +
           ": 1 sector pending, before 0\n"
           "grew: " +
           name('A') + ": 2 CRC errors, before 0\n"},
      // Drives that share their names are compared in their order.
      {{drive('A'), drive('A', {3})},
       {drive('A'), drive('A', {4})},
       "grew: " + name('A') + ": 4 sectors reallocated, before 3\n"}};
  for (const auto& [before, now, text] : kCases) {
    EXPECT_EQ(Changes(Recording(before), Recording(now)), text);
  }
}

// A log that is missing may hold what would be a sign.
TEST(Logs, ThatAreMissingAreMentioned) {
  DriveAnswers answers = AnswersOf(kStart, {});
  answers.whyNoLogs = "it hangs";
  const drives::Host host = tools::ReadRecordedHost(Written(Recording({answers})), kStart);
  EXPECT_EQ(views::HealthText(health::HealthOf(host.drives.at(0))), "OK: logs not read: it hangs");
}

}  // namespace test
