// A machine that is recorded and read again: the same report, failures included, and
// without serial numbers where that is asked for.
#include "machines/recorded/write_recording.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <numeric>

#include "machines/recorded/property_list.h"
#include "machines/recorded/read_recording.h"
#include "tests/support.h"
#include "tools/kept_answers.h"
#include "tools/mask_serials.h"

namespace test {

using platform::Machine;

Property Recorded(const Machine& machine) {
  return machines::ListingOf(machine, [](const platform::Entry& entry) {
    return machines::RecordDrive(entry.drive()).answers;
  });
}

Machine Replayed(const Machine& machine) {
  return machines::ReadRecording(machines::WritePropertyList(Recorded(machine)));
}

TEST(Recording, GivesTheSameReportAgain) {
  Machine machine;
  machine.systemVersion = 0x1058;
  const Dictionary properties = {
      {"t", Text("<&>\xC3\xA9")}, {"n", Integer(-(1LL << 40))}, {"d", {platform::Date{-5}}}};
  machine.roots = {{"Root", "Class", properties, {}, {}},
                   AtaDevice(HealthyDrive(), "disk0", 5000000000),
                   AhciDevice({}, "disk1")};
  std::vector<DriveAnswers> drives(8, HealthyAnswers());
  drives[0].exceeded = true;
  drives[1].whyNotOpened = "it is gone";
  drives[2].enables = false;
  drives[3].exceeded.reset();
  drives[4].data = {};
  drives[5].thresholds = {{0x10, 0, 194}, false};
  drives[6].identify = {};
  drives[7].data.succeeds = false;
  drives[7].date = platform::Date{800000000};
  for (const DriveAnswers& drive : drives) {
    machine.roots[0].children.push_back(AhciDevice(DriveOf(drive), "disk2", 250059350016));
  }
  const Machine replayed = Replayed(machine);
  EXPECT_EQ(replayed.systemVersion, 0x1058);
  EXPECT_EQ(Recorded(replayed), Recorded(machine));
  EXPECT_EQ(ReportOf(replayed), ReportOf(machine));
  EXPECT_EQ(ReportOf(Replayed(Machine())), "") << "no entry at all";
  EXPECT_THROW(machines::WritePropertyList(Text("a\rb")), std::runtime_error);
}

// IDENTIFY DEVICE data with a checksum; each word of the serial number has its characters
// exchanged.
Data Identify(std::string_view serial, std::uint8_t elsewhere) {
  Data identify(512, 0x11);
  std::copy(serial.begin(), serial.end(), identify.begin() + 20);
  for (const auto& [first, last] : {std::pair{108, 115}, {129, 159}, {176, 205}}) {
    std::fill(identify.begin() + 2 * first, identify.begin() + 2 * last + 2, elsewhere);
  }
  identify[510] = 0xA5;
  identify[511] = 0;
  identify[511] = static_cast<std::uint8_t>(-std::accumulate(identify.begin(), identify.end(), 0));
  return identify;
}

Property Listing(const Data& identify, const char* text, std::uint8_t byte) {
  return Dict({{"RecordedDrive", Dict({{"Identify", Bytes(identify)}})},
               {"Serial Number", Text(text)},
               {"k", {platform::Array{Dict({{"serial-number", Bytes({byte, 0})}})}}},
               {"Serial ATA", Text("kept")}});
}

TEST(Masking, LeavesNothingThatTellsADrive) {
  Data identify = Identify("BA1  DC2            ", 0x11);
  Data masked = Identify("XXX  XXX            ", 0);
  const auto expectMasked = [&] {
    Property listing = Listing(identify, " a\xC3\xA9 9", 'a');
    tools::MaskSerials(listing);
    EXPECT_EQ(listing, Listing(masked, " XX X", 'X'));
  };
  expectMasked();
  identify[511] ^= 1;
  masked[511] = identify[511];  // a wrong checksum stays
  expectMasked();
}

// Answers for sleeping drives, from the file that the recorder is about to replace.
TEST(KeptAnswers, AreThoseOfOneDriveFromTheLastDays) {
  const std::string file = testing::TempDir() + "kept." + std::to_string(getpid());
  const std::int64_t now = platform::Now().seconds;
  constexpr std::int64_t kDay = 86400;
  Machine machine;
  machine.roots = {{"Root", "Class", {}, {}, {}}};
  // A drive for each letter, which its serial number is full of.
  const auto add = [&](char letter, std::optional<std::int64_t> date, const std::string& failure) {
    DriveAnswers answers = HealthyAnswers();
    std::fill_n(answers.identify.bytes.begin() + 20, 20, static_cast<std::uint8_t>(letter));
    if (date) answers.date = platform::Date{*date};
    answers.whyNotOpened = failure;
    machine.roots[0].children.push_back(AhciDevice(DriveOf(answers)));
    platform::Block identify;
    std::ranges::copy(answers.identify.bytes, identify.begin());
    return identify;
  };
  const std::pair<platform::Block, bool> kCases[] = {{add('a', now - 3 * kDay + 60, ""), true},
                                                     {add('b', now - 3 * kDay - 60, ""), false},
                                                     {add('c', now + kDay, ""), false},
                                                     {add('d', {}, ""), false},
                                                     {add('e', now, "it is gone"), false},
                                                     {add(' ', now, ""), false},
                                                     {add('f', now, ""), false},
                                                     {add('f', now, ""), false}};
  std::ofstream(file) << machines::WritePropertyList(Recorded(machine));
  const auto kept = tools::ReadKeptAnswers("test", file, 3);
  for (const auto& [identify, isKept] : kCases) {
    const auto answers = kept(identify);
    ASSERT_EQ(answers.has_value(), isKept) << identify[20];
    EXPECT_TRUE(!isKept || answers->data.bytes == HealthyAnswers().data.bytes);
  }
  platform::Block foreign = kCases[0].first;
  foreign[60] = 'y';  // of the model
  EXPECT_FALSE(kept(foreign).has_value());

  const std::pair<const char*, std::string> kFiles[] = {{"", "test: .*: the file is empty\n"},
                                                        {nullptr, ""}};
  for (const auto& [content, error] : kFiles) {
    std::remove(file.c_str());
    if (content != nullptr) std::ofstream(file) << content;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(tools::ReadKeptAnswers("test", file, 3)(kCases[0].first).has_value());
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_TRUE(testing::internal::RE::FullMatch(told, error)) << told;
  }
}

}  // namespace test
