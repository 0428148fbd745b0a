// What a recording tells beyond its report: counts, names of drives that could not be read, and
// the disks that are not in the report.
#include "tools/recorded_host.h"

#include "tests/support.h"
#include "views/views.h"

namespace test {

struct Attribute {
  std::uint8_t id, value;
  std::uint64_t raw;
};

// Each attribute has a threshold of 1, so that it is in the report where it has a value.
DriveAnswers AnswersOf(const std::vector<Attribute>& attributes) {
  std::vector<BlockEntry> data;
  std::vector<BlockEntry> thresholds;
  for (const auto& [id, value, raw] : attributes) {
    data.push_back({id, 0, value, static_cast<std::uint8_t>(value - 1), raw});
    thresholds.push_back({id, 1});
  }
  return {
      .exceeded = false, .data = {BlockOf(data), true}, .thresholds = {BlockOf(thresholds), true}};
}

Entry Device(const std::string& disk, const Dictionary& characteristics, const Drive& drive) {
  Entry device = AhciDevice(drive, disk);
  device.properties = {{"Device Characteristics", Dict(characteristics)}};
  return device;
}

drives::Host HostOf(const std::vector<Entry>& devices) {
  return tools::ReadRecordedHost({.roots = {{.name = "Root", .children = devices}}});
}

TEST(RecordedHost, HasTemperatureAndSectorsWhereTheRawValuesAreSuch) {
  // Temperature, and sectors by the first letter of their state.
  const std::pair<std::vector<Attribute>, std::string> kRows[] = {
      {{{1, 9, 7}}, "-"},
      {{{5, 9, 69}, {197, 9, 2}, {198, 9, 0}, {194, 9, 34}}, "34 r69 p2 u0"},
      {{{5, 9, 0xFFFF0000FFFF}, {197, 9, 0xFFFFFFFF}, {198, 9, 0x100000000}},
       "- r65535 p4294967295 u0"},
      {{{5, 9, 0x10000}, {197, 9, 0x100010000}, {190, 9, 40}, {194, 9, 0x22001100FF22}},
       "34 r65536 p?"},
      {{{194, 9, 0}, {190, 9, 0x0A64}}, "100"},
      {{{194, 9, 101}, {190, 9, 1}}, "1"},
      // The entry with a normalized value counts, as in the report, but none is better than
      // nothing.
      {{{5, 0, 7}, {5, 9, 8}, {197, 0, 3}, {197, 0, 4}}, "- r8 p3"},
  };
  std::vector<Entry> devices;
  for (const auto& [attributes, expected] : kRows) {
    devices.push_back(Device("sd", {}, DriveOf(AnswersOf(attributes))));
  }
  const drives::Host host = HostOf(devices);
  ASSERT_EQ(host.drives.size(), std::size(kRows));
  for (std::size_t i = 0; i < std::size(kRows); i++) {
    const drives::Drive& drive = host.drives[i];
    const auto& [temperature, sectors, date] = drive.recorded.value();
    std::string said = temperature ? std::to_string(*temperature) : "-";
    for (const auto& [state, count] : sectors) {
      said += std::string(" ").append(state.substr(0, 1)) + (count ? std::to_string(*count) : "?");
    }
    EXPECT_EQ(said, kRows[i].second) << i;
  }
}

TEST(RecordedHost, HasEveryDiskUnderItsName) {
  DriveAnswers read = AnswersOf({{187, 9, 0x010203040506}, {5, 1, 69}});
  read.identify = HealthyAnswers().identify;
  read.date = Date(0);
  const DriveAnswers hung = NotOpened("it failed");
  DriveAnswers failed = hung;
  failed.identify = read.identify;
  DriveAnswers silent = read;
  silent.enables = false;
  const Dictionary known = {{"Product Name", Text("KNOWN")}, {"Serial Number", Text("K1")}};
  Entry notATA = Device("nvme0n1", {}, {});
  notATA.className = "IOBlockStorageDevice";
  const drives::Host host =
      HostOf({Device("sda", {}, DriveOf(failed)), Device("sdb", known, DriveOf(failed)), notATA,
              Device("sdc", {}, DriveOf(silent)), Device("sdd", known, DriveOf(hung)),
              Device("sda", known, DriveOf(read)), Device("sde", {}, {})});
  EXPECT_EQ(views::JsonText(host), R"({"drives":[
{"device":"/dev/rsda","product":"KNOWN","revision":"REV     ","capacity":"","serial":"SERIAL              ","threshold_exceeded":false,"reallocated_sectors":69,"unix_time":978307200,"attributes":[{"id":187,"name":"Unknown Attribute","flags":0,"flags_ata":0,"value":9,"threshold":1,"valid":true,"pre_failure":false,"reached":false,"worst":8,"raw":1108152157446},{"id":5,"name":"Reallocated Sector Count","flags":0,"flags_ata":0,"value":1,"threshold":1,"valid":true,"pre_failure":false,"reached":true,"worst":0,"raw":69}]}
],"not_read":["/dev/rsda","/dev/rsdb","/dev/rsdd","/dev/rsde"],"not_read_drives":[{"device":"/dev/rsda","product":"MODEL","serial":"SERIAL"},{"device":"/dev/rsdb","product":"KNOWN","serial":"SERIAL"},{"device":"/dev/rsdd","product":"KNOWN","serial":"K1"},{"device":"/dev/rsde","product":"","serial":""}],"without_smart":["sdc"],"not_ata":["nvme0n1"]}
)");
  const char* const others =
      R"((#|smartprobe_(drives|drive_[ai]|drive_th|attribute_[vt]|attribute_re|attr.*id="5")).*)"
      "\n";
  const std::string samples = Replaced(views::MetricsText(host), others, "");
  EXPECT_EQ(samples, R"(smartprobe_disks_not_looked_at 1
smartprobe_drive_read_time_seconds{device="/dev/rsda",disk="sda",product="KNOWN",serial="SERIAL"} 978307200
smartprobe_drive_sectors{device="/dev/rsda",disk="sda",product="KNOWN",serial="SERIAL",state="reallocated"} 69
smartprobe_drive_read_failed{device="/dev/rsda",disk="sda",product="KNOWN",serial="SERIAL"} 0
smartprobe_drive_read_failed{device="/dev/rsda",disk="sda",drive="1",product="MODEL",serial="SERIAL"} 1
smartprobe_drive_read_failed{device="/dev/rsdb",disk="sdb",product="KNOWN",serial="SERIAL"} 1
smartprobe_drive_read_failed{device="/dev/rsdd",disk="sdd",product="KNOWN",serial="K1"} 1
smartprobe_drive_read_failed{device="/dev/rsde",disk="sde"} 1
smartprobe_attribute_worst{device="/dev/rsda",disk="sda",product="KNOWN",serial="SERIAL",id="187",name="attribute 187",kind="life-span"} 8
smartprobe_attribute_raw{device="/dev/rsda",disk="sda",product="KNOWN",serial="SERIAL",id="187",name="attribute 187",kind="life-span"} 1108152157446
)");
}

TEST(RecordedHost, ShowsEachDeviceAsIfThereWereNoOther) {
  DriveAnswers failed = HealthyAnswers();
  failed.whyNotOpened = "it failed";
  Entry sized = AhciDevice(DriveOf(failed), "sda", 5120);
  std::vector<Entry> devices(
      66, Device("sdb", {}, HealthyDrive()));  // more than the table has room for
  devices[0] = sized;
  Entry ofBothKinds = devices[1];
  ofBothKinds.name = "IOATABlockStorageDevice";
  ofBothKinds.properties = AtaDevice({}).properties;
  devices.push_back(ofBothKinds);
  for (const char* odd : {"two:0\nGetSMARTFailed:lines", "no\nline"}) {
    devices.push_back(Device(odd, {}, DriveOf(failed)));
  }
  const drives::Host host = HostOf(devices);
  EXPECT_EQ(host.drives.size(), 66U);
  EXPECT_EQ(host.drives.back().serial, DeviceLines().serial);
  EXPECT_EQ(host.drives.back().capacity, "") << "of the drive before it";
  ASSERT_EQ(host.notRead.size(), 4U) << "the second client of a device is refused";
  for (const drives::UnreadDrive& drive : host.notRead) EXPECT_EQ(drive.serial, "SERIAL");
  EXPECT_EQ(host.notRead.back().device, "no\nline");

  devices.resize(4096, devices[0]);
  EXPECT_EQ(HostOf(devices).drives.size(), 66U);
  devices.push_back(devices[0]);
  EXPECT_THROW(HostOf(devices), std::runtime_error);
}

}  // namespace test
