// What a recording tells beyond its report: counts, names of drives that could not be read, and
// the disks that are not in the report.
#include "tools/recorded_host.h"

#include "tests/support.h"
#include "views/field_texts.h"
#include "views/views.h"

namespace test {

struct Attribute {
  std::uint8_t id, value;
  std::uint64_t raw = 0;
  std::uint8_t worst = 100, flags = 0;
};

// Each attribute has a threshold of 1, so that it is in the report where it has a value.
DriveAnswers AnswersOf(const std::vector<Attribute>& attributes) {
  std::vector<BlockEntry> data;
  std::vector<BlockEntry> thresholds;
  for (const auto& [id, value, raw, worst, flags] : attributes) {
    data.push_back({id, flags, value, worst, raw});
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
  return tools::ReadRecordedHost({.roots = {{.name = "Root", .children = devices}}}, Date(0));
}

constexpr auto kNow = std::chrono::sys_days(std::chrono::year(2026) / 11 / 25);

// The host of one drive with these attributes, IDENTIFY words and other answers.
struct Sign {
  std::vector<Attribute> attributes = {{1, 100}};
  std::string words;  // for people, after the path
  std::vector<std::pair<int, int>> identify = {};
  int selfTest = 0;
  std::string product = "DISK";
};

TEST(RecordedHost, ShowsEachSignWithItsWord) {
  const std::vector<std::pair<int, int>> kSolid = {{217, 1}};
  const Sign kRows[] = {
      {{{5, 9, 69}, {197, 9, 2}, {198, 9, 0}}, "caution: 69 sectors reallocated, 2 pending"},
      {{{187, 100, 412}, {184, 100, 1}}, "caution: 412 uncorrectable errors; 1 end-to-end error"},
      {{{5, 9, 0xFFFF0000FFFF}, {197, 9, 0xFFFFFFFF}, {198, 9, 0x100000000}},
       "caution: 65535 sectors reallocated, 4294967295 pending; failing soon: replace it"},
      {{{5, 9, 0x10000}}, "caution: 65536 sectors reallocated; failing soon: replace it"},
      // Of several the largest counts, whether it has a normalized value or not.
      {{{5, 0, 7}, {5, 9, 8}, {197, 0, 3}, {197, 0, 4}},
       "caution: 8 sectors reallocated, 4 pending"},
      {{{5, 100, 0x100010000}}, "OK: sector count not clear"},
      {{{5, 100, 0x100010000, 99}}, "caution: sector count not clear"},
      {{{197, 99, 0x100010000}}, "caution: sector count not clear"},
      {{{198, 100, 0x101000000}}, "OK: sector count not clear"},
      {{{187, 253, 0x100010000, 200}}, "OK: error count not clear"},
      {{{3, 100, 0, 1, 1}}, "caution: Spin-up Time was at its threshold once"},
      {{{3, 100, 0, 0, 1}, {4, 100, 0, 1}}, "OK"},
      {{{1, 100}}, "OK: last self-test aborted", {}, 0x10},
      {{{1, 100}}, "OK: last self-test interrupted", {}, 0x2F},
      {{{1, 100}}, "caution: last self-test failed: a fatal or unknown error", {}, 0x30},
      {{{1, 100}}, "caution: last self-test failed: the read element failed", {}, 0x7F},
      {{{1, 100}}, "caution: last self-test failed: handling damage suspected", {}, 0x80},
      {{{1, 100}}, "OK", {}, 0x9F},
      {{{1, 100}}, "OK: self-test running", {}, 0xF3},
      {{{233, 10}}, "OK"},
      {{{233, 10}}, "worn: 10 left of 100 by attribute 233", kSolid},
      {{{177, 99}, {231, 9}, {202, 8}}, "worn: 8 left of 100 by attribute 202", kSolid},
      {{{177, 11}, {232, 100}, {230, 5}}, "OK", kSolid},
      {{{194, 9, 60}, {190, 9, 61}}, "OK"},
      {{{194, 9, 101}}, "OK"},
      {{{190, 9, 0x2200003D}}, "hot: 61 °C"},
      {{{194, 9, 70}}, "OK", kSolid},
      {{{194, 9, 71}}, "hot: 71 °C", kSolid},
      {{{199, 2, 99}, {188, 2, 99}, {10, 2, 99}}, "OK"},
      {{{1, 100}}, "OK: DISK, 7200 rpm", {{217, 7200}}},
      {{{9, 99, 61}, {12, 99, 0xF00000002}},
       "OK: DISK, on for 61 hours (0.0 years), 2 power cycles"},
      {{{9, 99, 262800}}, "OK: DISK, on for 262800 hours (30.0 years)"},
      {{{9, 99, 262801}}, "OK: DISK"},
      {{{9, 99, 121}}, "OK: Maxtor 6, on for 2 hours (0.0 years)", {}, 0, "Maxtor 6"},
      {{{9, 99, 1}}, "OK: MAXTOR STM3, on for 1 hour (0.0 years)", {}, 0, "MAXTOR STM3"},
      {{{9, 99, 7260}}, "OK: FUJITSU M, on for 2 hours (0.0 years)", {}, 0, "FUJITSU M"},
      {{{9, 99, 2208}, {12, 99, 635}}, "OK: FUJITSU M, 635 power cycles", {}, 0, "FUJITSU M"},
  };
  for (const Sign& row : kRows) {
    DriveAnswers answers = AnswersOf(row.attributes);
    answers.data.bytes[363] = static_cast<std::uint8_t>(row.selfTest);
    answers.identify = {Data(base::kBlockSize), true};
    for (const auto& [word, value] : row.identify) {
      const auto at = answers.identify.bytes.begin() + 2 * word;
      at[0] = static_cast<std::uint8_t>(value);
      at[1] = static_cast<std::uint8_t>(value >> 8);
    }
    const drives::Host host =
        HostOf({Device("sd", {{"Product Name", Text(row.product)}}, DriveOf(answers))});
    const drives::Drive& drive = host.drives.at(0);
    const std::string words = views::HealthText(health::HealthOf(drive));
    const std::string all = words + ": " + views::DescriptionText(drive);
    EXPECT_TRUE(words == row.words || all == row.words) << all << " instead of " << row.words;
  }
}

// In every form that shows rows, and for the drive as a whole.
TEST(RecordedHost, MarksEachRowForItsOwnReason) {
  DriveAnswers answers = AnswersOf({{5, 9, 69},
                                    {3, 100, 0, 1, 1},
                                    {4, 100, 0, 1},
                                    {194, 9, 75},
                                    {190, 9, 40},
                                    {233, 5},
                                    {202, 10},
                                    {177, 11}});
  answers.identify = {Data(base::kBlockSize), true};
  for (const auto& [at, byte] : {std::pair(434, 1), {336, 3}, {152, 14}, {154, 4}}) {
    answers.identify.bytes.at(static_cast<std::size_t>(at)) = static_cast<std::uint8_t>(byte);
  }
  answers.exceeded.reset();
  const drives::Host host = HostOf(
      {Device("sda", {}, DriveOf(answers)), Device("sdb", {}, DriveOf(AnswersOf({{194, 9, 40}})))});
  const health::Health health = health::HealthOf(host.drives.at(0));
  std::string rows;
  for (const drives::Attribute& attribute : host.drives[0].attributes) {
    rows += std::to_string(attribute.id) + " " + views::RowText(health, attribute) + ", ";
  }
  EXPECT_EQ(rows, "5 caution, 3 caution, 4 once, 194 hot, 190 OK, 233 worn, 202 worn, 177 OK, ");
  EXPECT_EQ(
      health::ReasonsText(health),
      "Spin-up Time was at its threshold once; 69 sectors reallocated; 5 left of 100 by attribute "
      "233; 75 °C; the drive's own self-assessment: no answer");
  EXPECT_TRUE(views::Check(host, {}).summary.ends_with("temperature_max=75"));
  EXPECT_EQ(Replaced(views::AdviceText(host), "([^ ]* [^ ]* [^ ]* [^ ]* [^ ]*).*", "&"),
            "Save the data of a\nA worn drive is near\nA hot drive needs more\n");
  const std::string page = views::PageText(host, {});
  const std::string facts =
      "SSD</dd></div>\n<div><dt>Form factor</dt><dd>2.5 inch</dd></div>\n<div><dt>Link</dt><dd>3.0 "
      "Gb/s";
  EXPECT_NE(page.find(facts), std::string::npos);
  EXPECT_EQ(page.find("study"), std::string::npos) << "of hard disks";
}

// A recording of a Linux host, whose drives answered at different times.
TEST(RecordedHost, SaysWhichHostItIsAndHowOldItsAnswersAre) {
  const auto answered = [](int hours) {
    DriveAnswers answers = HealthyAnswers();
    answers.date = kNow - std::chrono::hours(hours);
    return DriveOf(answers);
  };
  const Property origin =
      Dict({{"System", Text("Linux")}, {"Name", Text("nas")}, {"Date", {kNow}}});
  Entry unread = AtaDevice(DriveOf(NotOpened("it hangs")), "sdc");
  const platform::Machine machine = {
      .roots = {{.name = "Root",
                 .properties = {{"RecordedHost", origin}},
                 .children = {AhciDevice(answered(50), "sdaa"), AhciDevice(answered(25), "sdb"),
                              AhciDevice(answered(73), "sda"), unread}}}};
  const drives::Host host = tools::ReadRecordedHost(machine, kNow);
  EXPECT_EQ(host.recorded->newestAnswers, std::chrono::hours(25));
  const drives::Host later = tools::ReadRecordedHost(machine, kNow - std::chrono::hours(75));
  EXPECT_TRUE(later.recorded->isDatedLater) << "by two days";
  EXPECT_EQ(later.recorded->newestAnswers, std::chrono::hours(0)) << "of the disk before its time";
  EXPECT_EQ(views::AgeText(later), "The answers have a date in the future: look at the clock.");
  const auto at30Days = kNow + std::chrono::days(30);
  const drives::Host old = tools::ReadRecordedHost(machine, at30Days);
  for (const std::string& text : {views::BriefText(old, {}), views::PageText(old, {})}) {
    EXPECT_NE(text.find("The newest answers are 31 days old."), std::string::npos) << text;
  }
  platform::Machine undated = machine;
  undated.roots[0].children = {AhciDevice(HealthyDrive())};
  EXPECT_EQ(views::AgeText(tools::ReadRecordedHost(undated, at30Days)),
            "The newest answers are 30 days old.");
  EXPECT_EQ(
      views::Check(host, {}).summary,
      "smartprobe UNKNOWN: not read: /dev/sdc (EXAMPLE 250: it hangs); answers are 2 days old: "
      "/dev/sdaa; answers are 3 days old: /dev/sda; recorded on nas, 2026-11-25 00:00 UTC | "
      "drives=3 failing=0 not_read=1 nothing_known=0 gone=0 caution=0 worn=0 hot=0 "
      "no_attributes=0");
  EXPECT_EQ(views::BriefText(host, {}), R"(Device     Product      Serial number  Health
/dev/sda   EXAMPLE 250  SERIAL         OK
  answers are 3 days old
/dev/sdb   EXAMPLE 250  SERIAL         OK
/dev/sdaa  EXAMPLE 250  SERIAL         OK
  answers are 2 days old

Could not be read:
  /dev/sdc, EXAMPLE 250: it hangs
)");
}

TEST(RecordedHost, HasEveryDiskUnderItsName) {
  DriveAnswers read =
      AnswersOf({{187, 100, 0x010203040506}, {5, 1, 69}, {197, 100, 0x100010000}, {9, 100, 3}});
  read.identify = HealthyAnswers().identify;
  read.date = Date(0);
  const DriveAnswers hung = NotOpened("it failed");
  DriveAnswers failed = hung;
  failed.identify = read.identify;
  DriveAnswers silent = read;
  silent.enables = false;
  const Dictionary known = {{"Product Name", Text("KNOWN")}, {"Serial Number", Text("K1")}};
  Entry notAsked = Device("nvme0n1", {}, {});
  notAsked.className = "IOBlockStorageDevice";
  const drives::Host host =
      HostOf({Device("sda", {}, DriveOf(failed)), Device("sdb", known, DriveOf(failed)), notAsked,
              Device("sdc", {}, DriveOf(silent)), Device("sdd", known, DriveOf(hung)),
              Device("sda", known, DriveOf(read)), Device("sde", {}, {})});
  EXPECT_EQ(views::JsonText(host, "1.2.3"), R"({"drives":[
{"device":"/dev/rsda","product":"KNOWN","revision":"REV     ","capacity":"","serial":"SERIAL              ","disk":"sda","protocol":"ATA","threshold_exceeded":false,"health":"caution","reasons":["Reallocated Sector Count is 1, threshold 1: worn, plan to replace","69 sectors reallocated","sector count not clear","error count not clear"],"reallocated_sectors":69,"pending_sectors":null,"power_on_hours":3,"rotation_rate":30840,"last_self_test_status":0,"unix_time":978307200,"attributes":[{"id":187,"name":"Unknown Attribute","flags":0,"flags_ata":0,"value":100,"threshold":1,"valid":true,"pre_failure":false,"reached":false,"worst":100,"raw":1108152157446},{"id":5,"name":"Reallocated Sector Count","flags":0,"flags_ata":0,"value":1,"threshold":1,"valid":true,"pre_failure":false,"reached":true,"worst":100,"raw":69},{"id":197,"name":"Current Pending Sector","flags":0,"flags_ata":0,"value":100,"threshold":1,"valid":true,"pre_failure":false,"reached":false,"worst":100,"raw":4295032832},{"id":9,"name":"Power On Hours Count","flags":0,"flags_ata":0,"value":100,"threshold":1,"valid":true,"pre_failure":false,"reached":false,"worst":100,"raw":3}]}
],"not_read":["/dev/rsda","/dev/rsdb","/dev/rsdd","/dev/rsde"],"not_read_drives":[{"device":"/dev/rsda","product":"MODEL","serial":"SERIAL","reason":"it failed"},{"device":"/dev/rsdb","product":"KNOWN","serial":"SERIAL","reason":"it failed"},{"device":"/dev/rsdd","product":"KNOWN","serial":"K1","reason":"it failed"},{"device":"/dev/rsde","product":"","serial":""}],"gone":[],"without_smart":["sdc"],"not_asked":["nvme0n1"],"version":"1.2.3"}
)");
  const char* const others =
      R"((#|smartprobe_(drives|drive_[ai]|drive_th|attribute_[vt]|attribute_re|attr.*id=.(5|9|197).)).*)"
      "\n";
  const std::string samples = Replaced(views::MetricsText(host), others, "");
  EXPECT_EQ(samples, R"(smartprobe_disks_not_looked_at 1
smartprobe_drive_read_time_seconds{device="/dev/rsda",disk="sda",product="KNOWN",serial="SERIAL"} 978307200
smartprobe_drive_power_on_seconds{device="/dev/rsda",disk="sda",product="KNOWN",serial="SERIAL"} 10800
smartprobe_drive_self_test_failed{device="/dev/rsda",disk="sda",product="KNOWN",serial="SERIAL"} 0
smartprobe_drive_health{device="/dev/rsda",disk="sda",product="KNOWN",serial="SERIAL",grade="caution"} 1
smartprobe_drive_health{device="/dev/rsda",disk="sda",drive="1",product="MODEL",serial="SERIAL",grade="not read"} 1
smartprobe_drive_health{device="/dev/rsdb",disk="sdb",product="KNOWN",serial="SERIAL",grade="not read"} 1
smartprobe_drive_health{device="/dev/rsdd",disk="sdd",product="KNOWN",serial="K1",grade="not read"} 1
smartprobe_drive_health{device="/dev/rsde",disk="sde",grade="not read"} 1
smartprobe_drive_sectors{device="/dev/rsda",disk="sda",product="KNOWN",serial="SERIAL",state="reallocated"} 69
smartprobe_drive_read_failed{device="/dev/rsda",disk="sda",product="KNOWN",serial="SERIAL"} 0
smartprobe_drive_read_failed{device="/dev/rsda",disk="sda",drive="1",product="MODEL",serial="SERIAL"} 1
smartprobe_drive_read_failed{device="/dev/rsdb",disk="sdb",product="KNOWN",serial="SERIAL"} 1
smartprobe_drive_read_failed{device="/dev/rsdd",disk="sdd",product="KNOWN",serial="K1"} 1
smartprobe_drive_read_failed{device="/dev/rsde",disk="sde"} 1
smartprobe_attribute_worst{device="/dev/rsda",disk="sda",product="KNOWN",serial="SERIAL",id="187",name="attribute 187",kind="life-span"} 100
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
  for (const char* odd : {"two:0\nGetSMARTFailed:lines", "one:0\nline", "no\nline"}) {
    devices.push_back(Device(odd, {}, DriveOf(failed)));
  }
  const drives::Host host = HostOf(devices);
  EXPECT_EQ(host.drives.size(), 66U);
  EXPECT_EQ(host.drives.back().serial, DeviceLines().serial);
  EXPECT_EQ(host.drives.back().capacity, "") << "of the drive before it";
  ASSERT_EQ(host.notRead.size(), 5U) << "the second client of a device is refused";
  for (const drives::UnreadDrive& drive : host.notRead) EXPECT_EQ(drive.serial, "SERIAL");
  EXPECT_EQ(host.notRead.back().device, "no\nline");

  devices.resize(4096, devices[0]);
  EXPECT_EQ(HostOf(devices).drives.size(), 66U);
  devices.push_back(devices[0]);
  EXPECT_THROW(HostOf(devices), std::runtime_error);
}

}  // namespace test
