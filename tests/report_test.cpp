// Reports are read whole or refused at the right line, judged, and written in each form.
#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>

#include "report/check.h"
#include "report/form.h"
#include "report/report_reader.h"

namespace {

// Reads `bytes`; returns what is wrong with them.
std::string Read(const std::string& bytes, report::Listener& listener) {
  std::FILE* file = std::tmpfile();
  std::fwrite(bytes.data(), 1, bytes.size(), file);
  std::rewind(file);
  std::string damage;
  try {
    report::ReadReport(file, listener);
  } catch (const report::DamagedReport& error) {
    damage = error.what();
  }
  std::fclose(file);
  return damage;
}

struct Nobody : report::Listener {
  void OnDrive(const report::Drive& /*drive*/) override {}
  void OnFailed(const std::string& /*device*/) override {}
};

std::string Repeated(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

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
  const struct {
    std::string bytes;
    std::string damage;
  } kRows[] = {
      {Repeated(kStart + Repeated(kAttribute, 30) + kEnd + "GetSMARTFailed::0\n", 2), ""},
      {kStart + kEnd + "\r\n", "line 3: not a line of a report"},
      {"SmartDeviceStart:::d:::r:::c:::s\n", "line 1: too few fields"},
      {kStart + kAttribute, "line 3: the file ends inside a drive"},
      {kStart + "SmartDeviceEnd:::d:::False", "line 2: the file ends inside the line"},
      {kStart + kStart, "line 2: inside a drive that has not ended"},
      {kStart + kEnd + kAttribute, "line 3: an attribute outside a drive"},
      {kEnd, "line 1: the end of a drive that has not started"},
      {kStart + "SmartDeviceEnd:::e:::False\n", "line 2: the end of another drive"},
      {kStart + "SmartDeviceEnd:::d:::Maybe\n", "line 2: neither True nor False"},
      {kStart + Repeated(kAttribute, 31), "line 32: more than 30 attributes"},
      {"GetSMARTFailed:0\n", "line 1: a failure that does not end with :0"},
      {attribute("0:::n:::0:::1:::0" + ok), "line 2: the identifier is 0"},
      {attribute("01:::n:::0:::1:::0" + ok), "line 2: the identifier is no number to 255"},
      {attribute("1:::n:::65536:::1:::0" + ok), "line 2: the flags are no number to 65535"},
      {attribute("1:::n:::0:::256:::0" + ok), "line 2: the value is no number to 255"},
      {attribute("1:::n:::0:::1:::99999999999999999999" + ok),
       "line 2: the threshold is no number to 255"},
      {attribute("1:::n:::0:::1:::5 " + ok), "line 2: the threshold is no number to 255"},
      {attribute("1:::n:::0:::1:::0:::Pre-Fail:ok"), "line 2: the status is none of the four"},
  };
  for (const auto& row : kRows) {
    Nobody nobody;
    EXPECT_EQ(Read(row.bytes, nobody), row.damage) << row.bytes.substr(0, 200);
  }
}

TEST(Report, Check) {
  const std::string worn = "SMARTStatus:::4:::n:::0:::1:::5:::" + kWornStatus + "\n";
  const std::string failing = "SMARTStatus:::4:::n:::0:::1:::5:::" + kFailingStatus + "\n";
  const std::string failed = "GetSMARTFailed:f:0\n";
  const struct {
    std::string bytes;
    int status;
    std::string summary;
  } kRows[] = {
      {Repeated(kStart + kAttribute + kEnd, 3), 0, "OK: 3 drives"},
      {kStart + worn + kEnd, 1, "WARNING: worn: d"},
      {kStart + worn + failing + worn + kEnd, 2, "CRITICAL: failing: d"},
      {failed + kStart + worn + kEnd, 3, "UNKNOWN: not read: f; worn: d"},
      {kStart + "SmartDeviceEnd:::d:::True\n", 2, "CRITICAL: failing: d"},
      {"GetSMARTFailed::0\n" + failed + kStart + failing + kEnd, 2,
       "CRITICAL: failing: d; not read: (no path), f"},
      {kStart + failing + kEnd + kStart, 2,
       "CRITICAL: failing: d; line 5: the file ends inside a drive"},
  };
  for (const auto& row : kRows) {
    report::Check check;
    const std::string damage = Read(row.bytes, check);
    if (!damage.empty()) check.AddProblem(damage);
    EXPECT_EQ(static_cast<int>(check.Worst()), row.status) << row.summary;
    EXPECT_EQ(check.Summary(), "smartprobe " + row.summary);
  }
}

std::string Written(const std::string& bytes,
                    std::unique_ptr<report::Form> (*makeForm)(std::string&)) {
  std::string text;
  const auto form = makeForm(text);
  EXPECT_EQ(Read(bytes, *form), "");
  form->Finish();
  return text;
}

// A report with what makes series or columns collide, and with bytes that are no text.
const std::string kOdd =
    "GetSMARTFailed:/dev/a\"\\:0\n"
    "SmartDeviceStart:::d:::\xCA\"q\\:::x:::  r\x1B[\x7F\t\xC2\x9B\u00E9 :::1.00 TB::: s" +
    std::string(1, '\0') +
    "\xFF\xE2\x82\xED\xA0\x80\u2028\n"
    "SMARTStatus:::5:::Off\xCATrack:::13056:::21:::Always Failing:::" +
    kFailingStatus + "\n" +
    "SMARTStatus:::5:::Again:::0:::No Data:::Always Passing:::Life-Span:OK\n" +
    "SMARTStatus:::12:::C:::12800:::254 (Invalid):::20:::" + kWornStatus + "\n" +
    "SMARTStatus:::255:::a:::b:::65535:::0 (Invalid):::253:::Pre-Fail:OK\n"
    "SMARTStatus:::5:::n:::0:::9:::254 (Invalid):::Pre-Fail:OK\n"
    "SmartDeviceEnd:::d:::False\n"
    "GetSMARTFailed::0\n"
    "SmartDeviceStart:::d::::::::::::\n"
    "SmartDeviceEnd:::d:::True\n";

TEST(Report, AsJson) {
  EXPECT_EQ(Written(kOdd, report::MakeJson),
            R"({"drives":[
{"device":"d","product":" \"q\\:::x","revision":"  r�[���é ","capacity":"1.00 TB","serial":" s�����",)"
            R"("threshold_exceeded":false,"attributes":[)"
            R"({"id":5,"name":"Off Track","flags":13056,"flags_ata":51,"value":21,"threshold":255,)"
            R"("valid":true,"pre_failure":true,"reached":true},)"
            R"({"id":5,"name":"Again","flags":0,"flags_ata":0,"value":100,"threshold":0,)"
            R"("valid":true,"pre_failure":false,"reached":false},)"
            R"({"id":12,"name":"C","flags":12800,"flags_ata":50,"value":254,"threshold":20,)"
            R"("valid":false,"pre_failure":false,"reached":true},)"
            R"({"id":255,"name":"a:::b","flags":65535,"flags_ata":65535,"value":0,"threshold":253,)"
            R"("valid":false,"pre_failure":true,"reached":false},)"
            R"({"id":5,"name":"n","flags":0,"flags_ata":0,"value":9,"threshold":254,)"
            R"("valid":false,"pre_failure":true,"reached":false}]},
{"device":"d","product":"","revision":"","capacity":"","serial":"","threshold_exceeded":true,)"
            R"("attributes":[]}
],"failed":["/dev/a\"\\",""]}
)");
}

// `text` without every piece from `begin` to the next `end`.
std::string Without(std::string text, const std::string& begin, char end) {
  for (std::size_t at = text.find(begin); at != std::string::npos; at = text.find(begin, at)) {
    text.erase(at, text.find(end, at) + 1 - at);
  }
  return text;
}

// What describes the series is for the real reader of them to judge.
TEST(Report, AsPrometheus) {
  EXPECT_EQ(
      Without(Written(kOdd, report::MakePrometheus), "#", '\n'),
      R"(smartprobe_drive_info{drive="1",device="d",product=" \"q\\:::x",revision="  r�[���é ",capacity="1.00 TB",serial=" s�����"} 1
smartprobe_drive_info{drive="3",device="d",product="",revision="",capacity="",serial=""} 1
smartprobe_drive_threshold_exceeded{drive="1",device="d"} 0
smartprobe_drive_threshold_exceeded{drive="3",device="d"} 1
smartprobe_drive_read_failed{drive="0",device="/dev/a\"\\"} 1
smartprobe_drive_read_failed{drive="1",device="d"} 0
smartprobe_drive_read_failed{drive="2",device=""} 1
smartprobe_drive_read_failed{drive="3",device="d"} 0
smartprobe_attribute_value{drive="1",device="d",id="5",name="Off Track",kind="pre-failure"} 21
smartprobe_attribute_value{drive="1",device="d",id="12",name="C",kind="life-span"} 254
smartprobe_attribute_value{drive="1",device="d",id="255",name="a:::b",kind="pre-failure"} 0
smartprobe_attribute_threshold{drive="1",device="d",id="5",name="Off Track",kind="pre-failure"} 255
smartprobe_attribute_threshold{drive="1",device="d",id="12",name="C",kind="life-span"} 20
smartprobe_attribute_threshold{drive="1",device="d",id="255",name="a:::b",kind="pre-failure"} 253
smartprobe_attribute_reached{drive="1",device="d",id="5",name="Off Track",kind="pre-failure"} 1
smartprobe_attribute_reached{drive="1",device="d",id="12",name="C",kind="life-span"} 1
smartprobe_attribute_reached{drive="1",device="d",id="255",name="a:::b",kind="pre-failure"} 0
)");
}

TEST(Report, AsTable) {
  const std::string plain =
      Written(kOdd, [](std::string& text) { return report::MakeTable(text, false); });
  EXPECT_EQ(plain, R"(d,  "q\:::x, revision r�[���é, 1.00 TB, serial s�����: failing
   ID  Name               Value       Threshold  Kind         Status
    5  Off Track             21  Always Failing  pre-failure  failing
    5  Again            No Data  Always Passing  life-span    OK
   12  C          254 (Invalid)              20  life-span    reached
  255  a:::b        0 (Invalid)             253  pre-failure  OK
    5  n                      9   254 (Invalid)  pre-failure  OK

d: failing

Could not be read:
  /dev/a"\
  (no path)
)");
  const std::string colored =
      Written(kOdd, [](std::string& text) { return report::MakeTable(text, true); });
  EXPECT_EQ(Without(colored, "\x1B[", 'm'), plain);
  EXPECT_NE(colored.find("\n\x1B[31m    5  Off"), std::string::npos) << colored;
  EXPECT_NE(colored.find("\n\x1B[33m   12  C"), std::string::npos) << colored;
}

}  // namespace
