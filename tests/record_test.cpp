// A machine that is recorded and read again: the same report, failures included, and
// without serial numbers where that is asked for.
#include <numeric>

#include "machines/recorded/listing.h"
#include "machines/recorded/mask_serials.h"
#include "machines/recorded/property_list.h"
#include "machines/recorded/record_drive.h"
#include "machines/recorded/recorded_machine.h"
#include "platform/process_end.h"
#include "tests/support.h"

using platform::Data;
using platform::Dictionary;
using platform::Entry;
using platform::Machine;
using platform::Property;

namespace {

Dictionary Record(const Entry& entry) { return machines::RecordDrive(*entry.drive).answers; }

std::string ReportOf(Machine machine) {
  test::Install(std::move(machine.roots), machine.systemVersion);
  std::string report = test::Report();
  platform::EndProcess();
  return report;
}

Machine Replayed(const Machine& machine) {
  return machines::ReadRecordedMachine(
      machines::WritePropertyList(machines::ListingOf(machine, Record)));
}

template <typename Change>
Entry Device(const char* disk, Change change) {
  auto drive = test::HealthyDrive();
  change(*drive);
  return test::AhciDevice(drive, disk, 250059350016);
}

TEST(Recording, GivesTheSameReportAgain) {
  using Drive = test::FakeDrive;
  const auto everyKind = [] {
    Machine machine;
    machine.systemVersion = 0x1058;
    machine.roots = {{"Root",
                      "",
                      {{"t", test::Text("<&>\xC3\xA9")}, {"n", test::Integer(-(1LL << 40))}},
                      {},
                      {}},
                     test::AtaDevice(test::HealthyDrive(), "disk0", 5000),
                     Device("disk1", [](Drive& d) { d.status = true; }),
                     Device("disk2", [](Drive& d) { d.opens = false; }),
                     Device("disk3", [](Drive& d) { d.enables = false; }),
                     Device("disk4", [](Drive& d) { d.status.reset(); }),
                     Device("disk5", [](Drive& d) { d.data.reset(); }),
                     Device("disk6", [](Drive& d) { d.thresholds.reset(); }),
                     Device("disk7", [](Drive& d) { d.identify.reset(); }),
                     test::AhciDevice(nullptr, "disk8")};
    return machine;
  };
  Machine replayed = Replayed(everyKind());
  EXPECT_EQ(replayed.systemVersion, 0x1058);
  EXPECT_EQ(replayed.roots.at(0).properties, everyKind().roots[0].properties);
  EXPECT_EQ(ReportOf(std::move(replayed)), ReportOf(everyKind()));

  EXPECT_EQ(ReportOf(Replayed(Machine())), "") << "no entry at all";
}

TEST(Recording, NamesWhatFailedAndSendsEachCommandOnce) {
  const auto drive = test::HealthyDrive();
  EXPECT_TRUE(machines::RecordDrive(*drive).failures.empty());
  EXPECT_EQ(drive->calls, "OESDTIC");
  drive->enables = false;
  EXPECT_EQ(machines::RecordDrive(*drive).failures.size(), 1U);
  EXPECT_EQ(drive->calls, "OESDTICOEC");
  drive->enables = true;
  drive->data.reset();
  drive->status.reset();
  EXPECT_EQ(machines::RecordDrive(*drive).failures,
            (std::vector<std::string>{"SMART RETURN STATUS failed", "SMART READ DATA failed"}));
}

Data MaskedIdentify(const Data& identify) {
  Property listing = test::Dict({{"RecordedDrive", test::Dict({{"Identify", {identify}}})}});
  machines::MaskSerials(listing);
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
  for (std::size_t word = 0; word < 255; word++) {
    const bool isZeroed = (word >= 108 && word <= 111) || (word >= 129 && word <= 159) ||
                          (word >= 176 && word <= 205);
    if (word >= 10 && word <= 19) continue;
    EXPECT_EQ(masked[2 * word], isZeroed ? 0 : 0x11) << word;
    EXPECT_EQ(masked[2 * word + 1], isZeroed ? 0 : 0x11) << word;
  }
  EXPECT_EQ(std::accumulate(masked.begin(), masked.end(), 0) % 256, 0);
  identify[511] ^= 1;
  EXPECT_EQ(MaskedIdentify(identify)[511], identify[511]) << "a wrong checksum stays";

  Property listing =
      test::Dict({{"Serial Number", test::Text(" a\xC3\xA9 9")},
                  {"k", {platform::Array{test::Dict({{"serial-number", test::Bytes({'a', 0})}})}}},
                  {"Serial ATA", test::Text("kept")}});
  machines::MaskSerials(listing);
  EXPECT_EQ(
      listing,
      test::Dict({{"Serial Number", test::Text(" XX X")},
                  {"k", {platform::Array{test::Dict({{"serial-number", test::Bytes({'X', 0})}})}}},
                  {"Serial ATA", test::Text("kept")}}));
}

}  // namespace
