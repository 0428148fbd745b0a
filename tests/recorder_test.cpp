// smartprobe-record on a host of one drive, whose folders are the test's own.
#include "tools/recorder.h"

#include <algorithm>

#include "base/dates.h"
#include "drives/identify_data.h"
#include "machines/recorded/property_list.h"
#include "machines/recorded/recording_files.h"
#include "machines/recorded/write_recording.h"
#include "tests/fake_ata_drive.h"

namespace test {

class Recorder : public testing::Test {
 protected:
  void SetUp() override {
    AnswerWell();
    AddDisk(root_, "ATA\n");
  }

  // The program's status; what it prints is left in said_.
  int Run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "smartprobe-record");
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    int status = -1;
    said_ = Printed(stderr, [&] {
      status = tools::RunRecorder(static_cast<int>(arguments.size()), argv.data(),
                                  {root_ / "sys", root_ / "dev"});
    });
    return status;
  }

  DriveAnswers Recorded() const {
    return machines::ReadRecordingFile(file_).roots.at(0).children.at(0).drive();
  }

  fs::path root_ = EmptyFolder();
  std::string file_ = root_ / "host.plist";
  std::string said_;
};

TEST_F(Recorder, MasksSerialNumbersWhereThatIsAskedFor) {
  for (const auto& [option, serial] : {std::pair("--", "SERIAL"), {"--no-serials", "XXXXXX"}}) {
    EXPECT_EQ(Run({option, file_}), 0) << said_;
    EXPECT_EQ(drives::SerialNumber(Recorded().identify.Block().value()), serial);
    EXPECT_EQ(Recorded().data.bytes, HealthyAnswers().data.bytes);
    const Property host =
        machines::ReadRecordingFile(file_).roots.at(0).properties.at("RecordedHost");
    const std::string* name = platform::FindText(std::get<Dictionary>(host.value), "Name");
    EXPECT_EQ(*name == std::string(name->size(), 'X'), serial[0] == 'X');
  }
}

TEST_F(Recorder, LetsADriveSleepOfWhichItHasRecentAnswers) {
  constexpr int kAsleep = 0x01;
  constexpr int kAwake = 0xFF;
  // DAYS, how many hours old the answers in FILE are, the power mode, and whether they are kept.
  const std::tuple<std::string, int, int, bool> kCases[] = {
      {"3", 71, kAsleep, true},         {"3", 73, kAsleep, false}, {"1", 23, kAsleep, true},
      {"365", 364 * 24, kAsleep, true}, {"3", 1, kAwake, false},   {"", 1, kAsleep, false}};
  for (const auto& [days, hours, mode, isKept] : kCases) {
    DriveAnswers earlier = HealthyAnswers();
    earlier.date = base::Now() - std::chrono::hours(hours);
    const platform::Machine machine = {.roots = {AhciDevice(DriveOf(earlier))}};
    const auto record = [](const Entry& device) { return machines::RecordDrive(device.drive()); };
    fs::remove(file_);
    WriteFile(file_, machines::WritePropertyList(machines::ListingOf(machine, record)));
    answers['P'] = PowerMode(static_cast<std::uint8_t>(mode));
    EXPECT_EQ(Run({days.empty() ? "--" : "--let-sleep=" + days, file_}), 0) << said_;
    EXPECT_EQ(Recorded().date == earlier.date, isKept) << days << " days, " << hours << " hours";
  }
}

TEST_F(Recorder, RefusesWhatItCannotDoBeforeItAsksADrive) {
  const std::pair<std::vector<std::string>, int> kCases[] = {{{"--let-sleep=0", file_}, 2},
                                                             {{"--let-sleep=366", file_}, 2},
                                                             {{"--let-sleep=3d", file_}, 2},
                                                             {{"--let-sleep=3", "-"}, 2},
                                                             {{}, 2},
                                                             {{root_}, 1},
                                                             {{root_ / "none/host.plist"}, 1}};
  for (const auto& [arguments, status] : kCases) {
    EXPECT_EQ(Run(arguments), status) << testing::PrintToString(arguments);
    EXPECT_EQ(std::ranges::count(said_, '\n'), 1) << said_ << testing::PrintToString(arguments);
    EXPECT_FALSE(fs::exists(file_)) << testing::PrintToString(arguments);
  }
}

}  // namespace test
