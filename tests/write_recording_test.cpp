// A machine that is recorded and read again: the same report, failures included, and
// without serial numbers where that is asked for.
#include "machines/recorded/write_recording.h"

#include <algorithm>
#include <numeric>

#include "base/dates.h"
#include "drives/identify_data.h"
#include "machines/recorded/mask_serials.h"
#include "machines/recorded/property_list.h"
#include "machines/recorded/read_recording.h"
#include "tests/support.h"
#include "tools/kept_answers.h"

namespace test {

using platform::Machine;

Property Recorded(const Machine& machine) {
  return machines::ListingOf(
      machine, [](const platform::Entry& entry) { return machines::RecordDrive(entry.drive()); });
}

Machine Replayed(const Machine& machine) {
  return machines::ReadRecording(machines::WritePropertyList(Recorded(machine)));
}

TEST(Recording, GivesTheSameReportAgain) {
  const Dictionary properties = {
      {"t", Text("<&>\xC3\xA9")}, {"n", Integer(-(1LL << 40))}, {"d", {Date(-5)}}};
  Machine machine = {.systemVersion = 0x1058,
                     .roots = {{"Root", "Class", properties},
                               AtaDevice(HealthyDrive(), "disk0", 5000000000),
                               AhciDevice({}, "disk1")}};
  std::vector<DriveAnswers> drives(8, HealthyAnswers());
  drives[0].exceeded = true;
  drives[1].whyNotOpened = "it is gone";
  drives[2].enables = false;
  drives[3].exceeded.reset();
  drives[4].data = {};
  drives[5].thresholds = {{0x10, 0, 194}, false};
  drives[6].identify = {};
  drives[7].data.succeeds = false;
  drives[7].date = Date(800000000);
  for (const DriveAnswers& drive : drives) {
    machine.roots[0].children.push_back(AhciDevice(DriveOf(drive), "disk2", 250059350016));
  }
  const Machine replayed = Replayed(machine);
  EXPECT_EQ(replayed.systemVersion, 0x1058);
  EXPECT_EQ(Recorded(replayed), Recorded(machine));
  EXPECT_EQ(ReportOf(replayed), ReportOf(machine));
  EXPECT_EQ(replayed.roots[0].children[1].drive().whyNotOpened, "it is gone");
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

// Identify Controller data with that serial number and FRU identifier.
Data Controller(std::string_view serial, std::uint8_t elsewhere) {
  Data controller(512, 0x11);
  std::copy(serial.begin(), serial.end(), controller.begin() + 4);
  std::fill_n(controller.begin() + 112, 16, elsewhere);
  return controller;
}

Property Listing(const Data& identify, const Data& controller, const char* text,
                 std::uint8_t byte) {
  const Property several = {
      platform::Array{Integer(byte == 'X' ? 0 : 1), Dict({{"a", Text(text)}})}};
  return Dict({{"RecordedDrive",
                Dict({{"Identify", Bytes(identify)}, {"IdentifyController", Bytes(controller)}})},
               {"Serial Number", Text(text)},
               {"SerialNumbers", several},
               {"k", {platform::Array{Dict({{"serial-number", Bytes({byte, 0})}})}}},
               {"Serial ATA", Text("kept")}});
}

TEST(Masking, LeavesNothingThatTellsADrive) {
  Data identify = Identify("BA1  DC2            ", 0x11);
  Data masked = Identify("XXX  XXX            ", 0);
  const auto expectMasked = [&] {
    Property listing =
        Listing(identify, Controller("BA1  DC2            ", 0x11), " a\xC3\xA9 9", 'a');
    machines::MaskSerials(listing);
    EXPECT_EQ(listing, Listing(masked, Controller("XXX  XXX            ", 0), " XX X", 'X'));
  };
  expectMasked();
  identify[511] ^= 1;
  masked[511] = identify[511];  // a wrong checksum stays
  expectMasked();
}

// Answers for sleeping drives, from the file that the recorder is about to replace.
TEST(KeptAnswers, AreThoseOfOneDriveFromTheLastDays) {
  const std::string file = EmptyFolder() / "kept";
  constexpr int kDay = 86400;
  // A letter that the serial number is full of, how old the answers are, why there are none.
  const std::tuple<char, std::optional<int>, std::string, bool> kDrives[] = {
      {'a', 3 * kDay - 60, "", true},
      {'b', 3 * kDay + 60, "", false},
      {'c', -kDay, "", false},
      {'d', {}, "", false},
      {'e', 0, "it is gone", false},
      {' ', 0, "", false},
      {'f', 0, "", false},
      {'f', 0, "it is gone", false}};
  Machine machine = {.roots = {{"Root", "Class"}}};
  std::vector<std::string> identities;
  for (const auto& [letter, age, failure, isKept] : kDrives) {
    DriveAnswers answers = HealthyAnswers();
    std::fill_n(answers.identify.bytes.begin() + 20, 20, static_cast<std::uint8_t>(letter));
    if (age) answers.date = base::Now() - std::chrono::seconds(*age);
    answers.whyNotOpened = failure;
    machine.roots[0].children.push_back(AhciDevice(DriveOf(answers)));
    identities.push_back(drives::Identity(*answers.identify.Block()));
  }
  WriteFile(file, machines::WritePropertyList(Recorded(machine)));
  const auto kept = tools::ReadKeptAnswers("test", file, 3);
  for (std::size_t i = 0; i < identities.size(); i++) {
    EXPECT_EQ(kept(identities[i]).has_value(), std::get<bool>(kDrives[i])) << i;
  }
  EXPECT_EQ(kept(identities[0])->data.bytes, HealthyAnswers().data.bytes);
  std::string foreign = identities[0];
  foreign[0] = 'y';  // of the model
  EXPECT_FALSE(kept(foreign).has_value());

  const std::string said = Printed(stderr, [&] {
    EXPECT_FALSE(tools::ReadKeptAnswers("test", file + ".none", 3)(identities[0]).has_value());
    fs::resize_file(file, 0);
    EXPECT_FALSE(tools::ReadKeptAnswers("test", file, 3)(identities[0]).has_value());
  });
  EXPECT_EQ(said, "test: " + file + ": the file is empty\n");
}

}  // namespace test
