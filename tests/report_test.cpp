// Reports are read whole or refused at the right line, judged, and written in each form.
#include <regex>
#include <tuple>
#include <utility>

#include "report/forms.h"
#include "report/health.h"
#include "report/report_reader.h"
#include "tests/support.h"

using namespace std::string_literals;
using test::Repeated;

namespace {

const std::string kStart = "SmartDeviceStart:::d:::p:::r:::c:::s\n";
const std::string kAttribute = "SMARTStatus:::1:::n:::0:::1:::0:::Pre-Fail:OK\n";
const std::string kEnd = "SmartDeviceEnd:::d:::False\n";
const std::string kWornStatus =
    "Life-Span:Advisory Condition: Attribute has exeeded intended life expectancy";
const std::string kFailingStatus = "Pre-Fail:Pre-Failure Warning: Imminent loss of data predicted";

TEST(Report, DamageIsToldWithItsLine) {
  const auto attribute = [](const std::string& fields) {
    return kStart + "SMARTStatus:::" + fields + "\n" + kEnd;
  };
  const std::string ok = ":::Pre-Fail:OK";
  const std::string of64Bytes = "GetSMARTFailed:" + std::string(46, 'f') + ":0\n";
  const std::pair<std::string, std::string> kRows[] = {
      {Repeated(2, kStart + Repeated(30, kAttribute) + kEnd + "GetSMARTFailed::0\n"), ""},
      {kStart + kEnd + "\r\n", "line 3: not a line of a report"},
      {"SmartDeviceStart:::d:::r:::c:::s\n", "line 1: too few fields"},
      {kStart + kAttribute, "line 3: the file ends inside a drive"},
      {kStart + "SmartDeviceEnd:::d:::False", "line 2: the file ends inside the line"},
      {kStart + kStart, "line 2: inside a drive that has not ended"},
      {kStart + kEnd + kAttribute, "line 3: an attribute outside a drive"},
      {kEnd, "line 1: the end of a drive that has not started"},
      {kStart + "SmartDeviceEnd:::e:::False\n", "line 2: the end of another drive"},
      {kStart + "SmartDeviceEnd:::d:::Maybe\n", "line 2: neither True nor False"},
      {kStart + Repeated(31, kAttribute), "line 32: more than 30 attributes"},
      {Repeated(65536, of64Bytes), ""},
      {Repeated(65537, of64Bytes), "line 65537: the report is larger than 4 MiB"},
      {std::string((4 << 20) + 1, 'G'), "line 1: the report is larger than 4 MiB"},
      {"GetSMARTFailed:0\n", "line 1: a failure that does not end with :0"},
      {attribute("0:::n:::0:::1:::0" + ok), "line 2: the identifier is 0"},
      {attribute("01:::n:::0:::1:::0" + ok), "line 2: the identifier is no number to 255"},
      {attribute("1:::n:::65536:::1:::0" + ok), "line 2: the flags are no number to 65535"},
      {attribute("1:::n:::0:::256:::0" + ok), "line 2: the value is no number to 255"},
      {attribute("1:::n:::0:::1:::99999999999" + ok), "line 2: the threshold is no number to 255"},
      {attribute("1:::n:::0:::1:::0:::Pre-Fail:ok"), "line 2: the status is none of the four"},
  };
  for (const auto& [bytes, expected] : kRows) {
    const report::Report report = report::ParseReport(bytes);
    const std::string damage = report.damage ? report::DamageText(*report.damage) : "";
    EXPECT_EQ(damage, expected) << bytes.substr(0, 200);
  }
}

TEST(Report, Check) {
  const std::string worn = "SMARTStatus:::4:::n:::0:::1:::5:::" + kWornStatus + "\n";
  const std::string failing = "SMARTStatus:::4:::n:::0:::1:::5:::" + kFailingStatus + "\n";
  const std::string failed = "GetSMARTFailed:f:0\n";
  const std::tuple<std::string, int, std::string> kRows[] = {
      {Repeated(3, kStart + kAttribute + kEnd), 0, "OK: 3 drives"},
      {kStart + kEnd + kStart + worn + kEnd, 1, "WARNING: worn: d; attributes not known: d"},
      {kStart + worn + failing + worn + kEnd, 2, "CRITICAL: failing: d"},
      {failed + kStart + worn + kEnd, 3, "UNKNOWN: not read: f; worn: d"},
      {kStart + "SmartDeviceEnd:::d:::True\n", 2, "CRITICAL: failing: d"},
      {"GetSMARTFailed::0\n" + failed + kStart + failing + kEnd, 2,
       "CRITICAL: failing: d; not read: (no path), f"},
      {kStart + failing + kEnd + kStart, 2, "CRITICAL: failing: d"},
      {kStart + kAttribute + kEnd + "?\n", 3, "UNKNOWN: 1 drive"},
      {"GetSMARTFailed:\x1B\u202E:0\n", 3, "UNKNOWN: not read: \uFFFD\uFFFD"},
  };
  for (const auto& [bytes, status, expected] : kRows) {
    const auto [verdict, summary] = report::Check(report::ParseReport(bytes), {});
    EXPECT_EQ(static_cast<int>(verdict), status) << expected;
    EXPECT_EQ(summary, "smartprobe " + expected);
  }
  EXPECT_EQ(report::Check({}, {"a\nb", "c"}).summary, "smartprobe UNKNOWN: a\uFFFDb, c");
}

// What would break or reorder a line, and the neighbours of it that would not.
const std::string kUnfit =
    "\x01\x7F\xC2\x9B\u061C\u200D\u200E\u200F\u2028\u202E\u202C\u202F\u2065\u2066\u2069\u206A";
const std::string kReplaced =
    "\uFFFD\uFFFD\uFFFD\uFFFD\u200D\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD\u202F\u2065\uFFFD\uFFFD\u206A";

// A report with what makes series or columns collide, with a text longer than a label may be, and
// with bytes that are no text.
const std::string kOdd =
    "GetSMARTFailed:d:0\nGetSMARTFailed:/dev/a\"\\" + kUnfit + ":0\nSmartDeviceStart:::d:::" +
    "\xCA\"q\\:::x :::  r\x1B[\u028E :::1.00 TB:::  s\0\xFF\xE2\x82\xED\xA0\x80 \n"s +
    "SMARTStatus:::5:::First:::0:::No Data:::Always Failing:::" + kWornStatus + "\n" +
    "SMARTStatus:::5:::Off\xCATra\x1Bk:::13056:::21:::Always Failing:::" + kFailingStatus + R"(
SMARTStatus:::255:::a:::b:::65535:::0 (Invalid):::253:::)" +
    kWornStatus + R"(
SMARTStatus:::5:::n:::0:::254 (Invalid):::254 (Invalid):::Pre-Fail:OK
SmartDeviceEnd:::d:::True
GetSMARTFailed::0
SmartDeviceStart:::d::::::01234567890123456789012345678901234567890123456789012345678901234::::::
SmartDeviceEnd:::d:::False
)";

const std::string kNotReadOdd =
    "\nCould not be read:\n  <31>d<0>\n  <31>/dev/a\"\\" + kReplaced + "<0>\n  <31>(no path)<0>\n";

std::string Marked(const std::string& colored) {
  return std::regex_replace(colored, std::regex("\x1B\\[([0-9]+)m"), "<$1>");
}

TEST(Report, AsJson) {
  EXPECT_EQ(report::JsonText(report::ParseReport(kOdd)),
            R"({"drives":[
{"device":"d","product":"\u00a0\"q\\:::x ","revision":"  r\u001b[\u028e ","capacity":"1.00 TB","serial":"  s\u0000\ufffd\ufffd\ufffd ","threshold_exceeded":true,"attributes":[{"id":5,"name":"First","flags":0,"flags_ata":0,"value":100,"threshold":255,"valid":true,"pre_failure":false,"reached":true},{"id":5,"name":"Off\u00a0Tra\u001bk","flags":13056,"flags_ata":51,"value":21,"threshold":255,"valid":true,"pre_failure":true,"reached":true},{"id":255,"name":"a:::b","flags":65535,"flags_ata":65535,"value":0,"threshold":253,"valid":false,"pre_failure":false,"reached":true},{"id":5,"name":"n","flags":0,"flags_ata":0,"value":254,"threshold":254,"valid":false,"pre_failure":true,"reached":false}]},
{"device":"d","product":"","revision":"01234567890123456789012345678901234567890123456789012345678901234","capacity":"","serial":"","threshold_exceeded":false,"attributes":[]}
],"not_read":["d","/dev/a\"\\\u0001\u007f\u009b\u061c\u200d\u200e\u200f\u2028\u202e\u202c\u202f\u2065\u2066\u2069\u206a",""]}
)");
}

// What describes the series is for the real reader of them to judge.
TEST(Report, AsPrometheus) {
  const std::string samples = std::regex_replace(report::PrometheusText(report::ParseReport(kOdd)),
                                                 std::regex("#.*\n"), "");
  const std::string drive = R"(drive="0",device="d",product=" \"q\\:::x",serial="s����")";
  const std::string expected = R"(smartprobe_drives_read 2
smartprobe_drives_not_read 3
smartprobe_drive_info{@,revision="  r�[ʎ ",capacity="1.00 TB"} 1
smartprobe_drive_info{drive="1",device="d",product="",serial="",revision="012345678901234567890123456789012345678901234567890123456789012…",capacity=""} 1
smartprobe_drive_threshold_exceeded{@} 1
smartprobe_drive_threshold_exceeded{drive="1",device="d",product="",serial=""} 0
smartprobe_drive_attributes{@} 4
smartprobe_drive_attributes{drive="1",device="d",product="",serial=""} 0
smartprobe_drive_read_failed{@} 0
smartprobe_drive_read_failed{drive="1",device="d",product="",serial=""} 0
smartprobe_drive_read_failed{drive="2",device="d"} 1
smartprobe_drive_read_failed{drive="0",device="/dev/a\"\\%"} 1
smartprobe_drive_read_failed{drive="0",device=""} 1
smartprobe_attribute_value{@,id="5",name="Off Tra�k",kind="pre-failure"} 21
smartprobe_attribute_value{@,id="255",name="a:::b",kind="life-span"} 0
smartprobe_attribute_threshold{@,id="5",name="Off Tra�k",kind="pre-failure"} 255
smartprobe_attribute_threshold{@,id="255",name="a:::b",kind="life-span"} 253
smartprobe_attribute_reached{@,id="5",name="Off Tra�k",kind="pre-failure"} 1
smartprobe_attribute_reached{@,id="255",name="a:::b",kind="life-span"} 1
)";
  const auto withDrive = std::regex_replace(expected, std::regex("@"), drive);
  EXPECT_EQ(samples, std::regex_replace(withDrive, std::regex("%"), kReplaced));
}

TEST(Report, AsTable) {
  const std::string colored = report::TableText(report::ParseReport(kOdd), true);
  EXPECT_EQ(Marked(colored), R"(d,  "q\:::x, revision r�[ʎ, 1.00 TB, serial s����: <31>failing<0>
   ID  Name               Value       Threshold  Kind         Status
<33>    5  First            No Data  Always Failing  life-span    worn<0>
<31>    5  Off Tra�k             21  Always Failing  pre-failure  failing<0>
<33>  255  a:::b        0 (Invalid)             253  life-span    worn<0>
    5  n          254 (Invalid)   254 (Invalid)  pre-failure  OK

d, revision 01234567890123456789012345678901234567890123456789012345678901234: <33>no attributes<0>
)" + kNotReadOdd);
  EXPECT_EQ(std::regex_replace(colored, std::regex("\x1B\\[[0-9]+m"), ""),
            report::TableText(report::ParseReport(kOdd), false));
}

TEST(Report, Brief) {
  std::string near;
  for (const char* attribute : {"n:::0:::1:::Always Passing", "n:::0:::1:::Always Failing",
                                "n:::0:::0 (Invalid):::99", "n:::0:::1:::254 (Invalid)",
                                "n:::0:::No Data:::98", "near:::0:::252:::253", "n:::0:::0:::1"}) {
    near += std::string("SMARTStatus:::1:::") + attribute + ":::Pre-Fail:OK\n";
  }
  const std::string wide = std::string(42, 'w') + ":::0:::2:::1:::" + kWornStatus + "\n";
  const std::string bytes =
      kOdd + kStart + near + kEnd + kStart + "SMARTStatus:::1:::" + wide + kEnd;
  EXPECT_EQ(
      Marked(report::BriefText(report::ParseReport(bytes), true)),
      R"(Device  Product   Capacity  Serial number  Health         Nearest to threshold                      Value  Threshold
<31>d        "q\:::x   1.00 TB  s����          failing        -                                             -          -<0>
<33>d       -                -  -              no attributes  -                                             -          -<0>
d       p                c  s              OK             near                                        252        253
<33>d       p                c  s              worn           wwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwwww      2          1<0>
)" + kNotReadOdd);
}

}  // namespace
