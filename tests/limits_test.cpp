// The largest files of one kind: recorded machines are replayed and shown in every form, or
// refused, in little time and memory. Slow, and in vain under sanitizers, which take memory and
// time of their own.
#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>

#include "machines/recorded/read_recording.h"
#include "machines/recorded/recording_format.h"
#include "tests/every_form.h"
#include "tests/support.h"
#include "tools/replay.h"

namespace {

using test::Repeated;

std::string List(const std::string& value) { return "<plist version='1.0'>" + value + "</plist>"; }

std::string Keys(int count) {
  std::string keys;
  for (int i = 0; i < count; i++) keys += "<key>" + std::to_string(i) + "</key><true/>";
  return keys;
}

std::string Children(const std::string& entries) {
  return "<key>IORegistryEntryChildren</key><array>" + entries + "</array>";
}

// `before`, then as much of `filling` as makes a file of about the largest size, then `after`.
std::string Largest(const std::string& before, const std::string& filling,
                    const std::string& after) {
  const std::string piece = Repeated(1000, filling);
  const std::size_t room = machines::kMaxRecordingSize - before.size() - after.size();
  return before + Repeated(room / piece.size(), piece) + after;
}

const std::string kAHCI = "<key>IOObjectClass</key><string>IOAHCIBlockStorageDevice</string>";
const std::string kATA = "<key>IORegistryEntryName</key><string>IOATABlockStorageDevice</string>";

// `count` devices with these pairs, in so many others, one in the other, with `outer`.
std::string Devices(std::size_t count, const std::string& pairs, std::size_t levels = 0,
                    const std::string& outer = "", const std::string& kind = kAHCI) {
  return Repeated(levels, "<dict>" + kind + outer + "<key>IORegistryEntryChildren</key><array>") +
         Repeated(count, "<dict>" + kind + pairs + "</dict>") + Repeated(levels, "</array></dict>");
}

// A drive whose blocks hold as many attributes as they can.
std::string FullDrive() {
  std::string block;  // base64 of 30 entries whose identifiers are 1
  block = "EAAB" + Repeated(29, "MwBkZAAAAAAAAAAB") + "MwBkZAAAAAAAAAAA";
  return "<key>RecordedDrive</key><dict><key>Data</key><data>" + block +
         "</data><key>Thresholds</key><data>" + block +
         "</data><key>ThresholdExceeded</key><true/></dict>";
}

// The same, and that `count` times before.
std::string DriveWithHistory(std::size_t count) {
  const std::string drive = FullDrive();
  const std::string data = drive.substr(drive.find("<key>Data"), 0x2D0);
  const std::string item = "<dict>" + data.substr(0, data.find("<key>Thresholds")) +
                           "<key>Date</key><date>2026-11-25T00:00:00Z</date></dict>";
  return Repeated(1, drive.substr(0, drive.rfind("</dict>"))) +
         "<key>Date</key><date>2026-11-26T00:00:00Z</date><key>Earlier</key><array>" +
         Repeated(count, item) + "</array></dict>";
}

constexpr int kRefused = 1, kReplayed = 2, kShown = 3;

// Ends a process of its own with what was done with the file, within that memory and time.
void UseWithinLimits(const std::string& file, bool isShown, rlim_t most = 10) {
  const rlimit memory{.rlim_cur = std::size_t{512} << 20, .rlim_max = RLIM_INFINITY};
  const rlimit seconds{.rlim_cur = most, .rlim_max = RLIM_INFINITY};
  setrlimit(RLIMIT_AS, &memory);
  setrlimit(RLIMIT_CPU, &seconds);
  std::freopen("/dev/null", "w", stdout);
  int done = kRefused;
  try {
    platform::Machine machine = machines::ReadRecording(file);
    done = kReplayed;
    if (isShown) {
      test::ShowInEveryForm(std::move(machine));
      done = kShown;
    } else {
      tools::Replay(std::move(machine));
    }
  } catch (const std::runtime_error&) {
  }
  std::_Exit(done);
}

TEST(LimitsDeathTest, TheLargestFilesOfOneKindTakeLittleTimeAndMemory) {
  // What becomes of the file at most, and the file.
  const std::pair<int, std::string (*)()> kFiles[] = {
      {kShown,
       [] { return Largest("<plist><dict><key>", "text\n", "</key><true/></dict></plist>"); }},
      {kRefused, [] { return Largest("<plist><string>", "&amp;", "</string></plist>"); }},
      {kReplayed,
       [] { return List("<dict>" + Keys(250000) + Children(Devices(160000, "")) + "</dict>"); }},
      {kReplayed, [] { return List(Devices(100000, "", 122, Keys(2000))); }},
      // One long location for all devices, none of which can be enabled.
      {kReplayed,
       [] {
         return Largest(
             "<plist><dict><key>Protocol Characteristics</key><dict><key>Physical Interconnect"
             "</key><string>ATA</string></dict><key>unit number</key><integer>0</integer>"
             "<key>io-device-location</key><data>",
             "QUJD",
             "</data>" +
                 Children(Devices(
                     140000,
                     "<key>RecordedDrive</key><dict><key>EnableFails</key><true/></dict>")) +
                 "</dict></plist>");
       }},
      // As many disks as are shown: with all that a drive can say, and deep below one another
      // beside one long name for all.
      {kShown, [] { return List("<array>" + Devices(4096, FullDrive()) + "</array>"); }},
      {kShown,
       [] {
         const std::string start = "<dict><key>IORegistryEntryChildren</key><array>";
         return List("<array>" +
                     Repeated(1500, Repeated(125, start) + Devices(1, "") +
                                        Repeated(125, "</array></dict>")) +
                     "</array>");
       }},
      {kShown,
       [] {
         return List(
             Devices(1, "<key>BSD Name</key><string>" + std::string(60 << 20, 'n') + "</string>",
                     120, "", kATA));
       }},
  };
  for (const auto& [most, file] : kFiles) {
    const std::string bytes = file();
    const std::string size = std::to_string(bytes.size());
    EXPECT_EXIT(UseWithinLimits(bytes, false), testing::ExitedWithCode(std::min(most, kReplayed)),
                "")
        << size;
    const int shown = most == kReplayed ? kReplayed : most;
    EXPECT_EXIT(UseWithinLimits(bytes, true), testing::ExitedWithCode(shown), "") << size;
  }
}

TEST(LimitsDeathTest, TheHistoryOfManyDrivesIsSoonShown) {
  const std::string year = List("<array>" + Devices(64, DriveWithHistory(31 + 53)) + "</array>");
  EXPECT_EXIT(UseWithinLimits(year, true, 5), testing::ExitedWithCode(kShown), "");
  const std::string most = List("<array>" + Devices(90, DriveWithHistory(1000)) + "</array>");
  EXPECT_EXIT(UseWithinLimits(most, true), testing::ExitedWithCode(kShown), "") << most.size();
}

}  // namespace
