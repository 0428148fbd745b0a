// What a recording tells beyond its report: counts, names of drives that could not be read, and
// the disks that are not in the report.
#include "tools/recorded_report.h"

#include <regex>

#include "report/forms.h"
#include "tests/support.h"

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

report::Report ReportOf(const std::vector<Entry>& devices) {
  platform::EndProcess();
  return tools::RecordedReport({.roots = {{.name = "Root", .children = devices}}});
}

TEST(RecordedReport, HasTemperatureAndSectorsWhereTheRawValuesAreSuch) {
  // Temperature, and sectors by the first letter of their state.
  const std::pair<std::vector<Attribute>, std::string> kRows[] = {
      {{{1, 9, 7}}, "-"},
      {{{5, 9, 69}, {197, 9, 2}, {198, 9, 0}, {194, 9, 34}}, "34 r69 p2 u0"},
      {{{5, 9, 0xFFFF0000FFFF}, {197, 9, 0xFFFFFFFF}, {198, 9, 0x100000000}},
       "- r65535 p4294967295"},
      {{{5, 9, 0x10000}, {190, 9, 40}, {194, 9, 0x22001100FF22}}, "34"},
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
  const report::Report report = ReportOf(devices);
  ASSERT_EQ(report.drives.size(), std::size(kRows));
  for (std::size_t i = 0; i < std::size(kRows); i++) {
    const report::Drive& drive = report.drives[i];
    std::string told = drive.temperature ? std::to_string(*drive.temperature) : "-";
    for (const auto& [state, count] : drive.sectors) {
      told += std::string(" ").append(state.substr(0, 1)).append(std::to_string(count));
    }
    EXPECT_EQ(told, kRows[i].second);
  }
}

TEST(RecordedReport, HasEveryDiskUnderItsName) {
  DriveAnswers read = AnswersOf({{187, 9, 0x010203040506}, {5, 1, 69}});
  read.identify = HealthyAnswers().identify;
  read.date = platform::Date{0};
  const DriveAnswers hung = NotOpened("it failed");
  DriveAnswers failed = hung;
  failed.identify = read.identify;
  DriveAnswers silent = read;
  silent.enables = false;
  const Dictionary known = {{"Product Name", Text("KNOWN")}, {"Serial Number", Text("K1")}};
  Entry notATA = Device("nvme0n1", {}, {});
  notATA.className = "IOBlockStorageDevice";
  const report::Report report =
      ReportOf({Device("sda", {}, DriveOf(failed)), Device("sdb", known, DriveOf(failed)), notATA,
                Device("sdc", {}, DriveOf(silent)), Device("sdd", known, DriveOf(hung)),
                Device("sda", known, DriveOf(read)), Device("sde", {}, {})});
  EXPECT_EQ(report::JsonText(report), R"({"drives":[
{"device":"/dev/rsda","product":"KNOWN","revision":"REV     ","capacity":"","serial":"SERIAL              ","threshold_exceeded":false,"reallocated_sectors":69,"unix_time":978307200,"attributes":[{"id":187,"name":"Unknown Attribute","flags":0,"flags_ata":0,"value":9,"threshold":1,"valid":true,"pre_failure":false,"reached":false,"worst":8,"raw":1108152157446},{"id":5,"name":"Reallocated Sector Count","flags":0,"flags_ata":0,"value":1,"threshold":1,"valid":true,"pre_failure":false,"reached":true,"worst":0,"raw":69}]}
],"not_read":["/dev/rsda","/dev/rsdb","/dev/rsdd","/dev/rsde"],"not_read_drives":[{"device":"/dev/rsda","product":"MODEL","serial":"SERIAL"},{"device":"/dev/rsdb","product":"KNOWN","serial":"SERIAL"},{"device":"/dev/rsdd","product":"KNOWN","serial":"K1"},{"device":"/dev/rsde","product":"","serial":""}],"without_smart":["sdc"],"not_ata":["nvme0n1"]}
)");
  const std::regex others(
      "(#|smartprobe_(?!disks|drive_t.*ius|drive_s|drive_read|attribute_[rw][ao].*187)).*\n");
  const std::string samples = std::regex_replace(report::PrometheusText(report), others, "");
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

TEST(RecordedReport, NamesDevicesBeyondTheTableAndNoneByAnothersName) {
  std::vector<Entry> devices(65, Device("sda", {}, DriveOf(AnswersOf({{1, 9, 7}}))));
  devices.push_back(Device("sda", {}, HealthyDrive()));
  DriveAnswers failed = HealthyAnswers();
  failed.whyNotOpened = "it failed";
  devices.insert(devices.begin(), Device("two:0\nGetSMARTFailed:lines", {}, DriveOf(failed)));
  const report::Report report = ReportOf(devices);
  ASSERT_EQ(report.notRead.size(), 4U);
  EXPECT_EQ(report.notRead[0].serial + report.notRead[1].serial + report.notRead[2].serial, "");
  EXPECT_EQ(report.notRead[3].serial, "SERIAL");
}

}  // namespace test
