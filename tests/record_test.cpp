// A machine that is recorded and read again: the same report, failures included, and
// without serial numbers where that is asked for.
#include <numeric>

#include "machines/recorded/property_list.h"
#include "machines/recorded/recorded_machine.h"
#include "machines/recorded/recording.h"
#include "platform/ledger.h"
#include "tests/support.h"
#include "tools/mask_serials.h"

using platform::Data;
using platform::Dictionary;
using platform::Machine;
using platform::Property;

namespace {

Property Recorded(const Machine& machine) {
  return machines::ListingOf(machine, [](const platform::Entry& entry) {
    return machines::RecordDrive(*entry.drive).answers;
  });
}

Machine Replayed(const Machine& machine) {
  return machines::ReadRecordedMachine(machines::WritePropertyList(Recorded(machine)));
}

std::string ReportOf(const Machine& machine) {
  test::Install(machine.roots, machine.systemVersion);
  std::string report = test::Report();
  platform::EndProcess();
  return report;
}

TEST(Recording, GivesTheSameReportAgain) {
  Machine machine;
  machine.systemVersion = 0x1058;
  machine.roots = {{"Root", "Class", {{"t", test::Text("<&>\xC3\xA9")}}, {}, {}},
                   test::AtaDevice(test::HealthyDrive(), "disk0", 5000),
                   test::AhciDevice(nullptr, "disk1")};
  machine.roots[0].properties.push_back({"n", test::Integer(-(1LL << 40))});
  machine.roots[0].properties.push_back({"d", {platform::Date{-5}}});
  using Drive = test::FakeDrive;
  for (void (*change)(Drive&) :
       {+[](Drive& drive) { drive.status = true; }, +[](Drive& drive) { drive.opens = false; },
        +[](Drive& drive) { drive.enables = false; }, +[](Drive& drive) { drive.status.reset(); },
        +[](Drive& drive) { drive.data.reset(); }, +[](Drive& drive) { drive.thresholds.reset(); },
        +[](Drive& drive) { drive.identify.reset(); }}) {
    const auto drive = test::HealthyDrive();
    change(*drive);
    machine.roots[0].children.push_back(test::AhciDevice(drive, "disk2", 250059350016));
  }
  const Machine replayed = Replayed(machine);
  EXPECT_EQ(replayed.systemVersion, 0x1058);
  EXPECT_EQ(Recorded(replayed), Recorded(machine));
  EXPECT_EQ(ReportOf(replayed), ReportOf(machine));
  EXPECT_EQ(ReportOf(Replayed(Machine())), "") << "no entry at all";
}

Data MaskedIdentify(const Data& identify) {
  Property listing = test::Dict({{"RecordedDrive", test::Dict({{"Identify", {identify}}})}});
  tools::MaskSerials(listing);
  const auto& drive = std::get<Dictionary>(std::get<Dictionary>(listing.value)[0].value.value);
  return std::get<Data>(drive[0].value.value);
}

TEST(Masking, LeavesNothingThatTellsADrive) {
  Data identify(512, 0x11);
  const std::string serial = "BA1  DC2            ";  // each word's characters exchanged
  std::copy(serial.begin(), serial.end(), identify.begin() + 20);
  identify[510] = 0xA5;
  identify[511] = 0;
  identify[511] = static_cast<std::uint8_t>(-std::accumulate(identify.begin(), identify.end(), 0));

  const Data masked = MaskedIdentify(identify);
  EXPECT_EQ(std::string(masked.begin() + 20, masked.begin() + 40), "XXX  XXX            ");
  for (std::size_t i = 0; i < 510; i++) {
    const std::size_t word = i / 2;
    if (word >= 10 && word <= 19) continue;
    const bool isZeroed = (word >= 108 && word <= 115) || (word >= 129 && word <= 159) ||
                          (word >= 176 && word <= 205);
    EXPECT_EQ(masked[i], isZeroed ? 0 : 0x11) << word;
  }
  EXPECT_EQ(std::accumulate(masked.begin(), masked.end(), 0) % 256, 0);
  identify[511] ^= 1;
  EXPECT_EQ(MaskedIdentify(identify)[511], identify[511]) << "a wrong checksum stays";

  const auto listing = [](const char* text, std::uint8_t byte) {
    return test::Dict(
        {{"Serial Number", test::Text(text)},
         {"k", {platform::Array{test::Dict({{"serial-number", test::Bytes({byte, 0})}})}}},
         {"Serial ATA", test::Text("kept")}});
  };
  Property property = listing(" a\xC3\xA9 9", 'a');
  tools::MaskSerials(property);
  EXPECT_EQ(property, listing(" XX X", 'X'));
}

}  // namespace
