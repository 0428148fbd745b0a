// Reports are read whole or refused at the right line, judged, and written in each form.
#include "views/views.h"

#include <tuple>
#include <utility>

#include "drives/report_lines.h"
#include "tests/support.h"
#include "views/field_texts.h"

using namespace std::string_literals;
using test::Repeated;
using test::Replaced;

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
      {Replaced(kStart + kAttribute + kEnd, "\n", "\r\n"), ""},
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
    const drives::Host host = drives::ParseReport(bytes);
    const std::string damage = host.damage ? views::DamageText(*host.damage) : "";
    EXPECT_EQ(damage, expected) << bytes.substr(0, 200);
  }
}

// The line of an attribute whose status says that its threshold is reached.
std::string Reached(int id, const std::string& threshold, const std::string& status) {
  return "SMARTStatus:::" + std::to_string(id) + ":::n:::0:::1:::" + threshold + ":::" + status +
         "\n";
}

TEST(Report, Check) {
  const std::string worn = Reached(4, "5", kWornStatus);
  const std::string hot = Reached(190, "5", kWornStatus) + Reached(194, "5", kWornStatus);
  const std::string failing = Reached(4, "5", kFailingStatus);
  const std::string invalid = Reached(4, "254 (Invalid)", kFailingStatus);
  const std::string failed = "GetSMARTFailed:f:0\n";
  using Sectors = std::vector<std::pair<std::string_view, std::uint32_t>>;
  const Sectors none = {{"reallocated", 0}, {"uncorrectable", 0}};
  // What the report says, what its drives have lost, and the judgement.
  const std::tuple<std::string, Sectors, int, std::string> kRows[] = {
      {Repeated(3, kStart + kAttribute + kEnd), none, 0,
       "OK: 3 drives, no threshold reached, no lost sector counted"},
      {kStart + kEnd + kStart + worn + kEnd, none, 1,
       "WARNING: worn: d (n is 1, threshold 5: worn, plan to replace); attributes not known: d"},
      {kStart + hot + invalid + kEnd, none, 1,
       "WARNING: hot, now or once: d (n is 1, threshold 5: hot, now or once, n is 1, threshold 5: "
       "hot, now or once)"},
      {kStart + hot + worn + kEnd, none, 1,
       "WARNING: worn: d (n is 1, threshold 5: hot, now or once, n is 1, threshold 5: hot, now or "
       "once, n is 1, threshold 5: worn, plan to replace)"},
      {kStart + worn + kEnd,
       {{"reallocated", 69}, {"pending", 0}, {"uncorrectable", 2}},
       1,
       "WARNING: caution: d (n is 1, threshold 5: worn, plan to replace, 69 sectors reallocated, 2 "
       "uncorrectable)"},
      {kStart + kEnd,
       {{"reallocated", 0}, {"pending", 1}},
       1,
       "WARNING: caution: d (1 sector pending)"},
      {kStart + worn + failing + worn + kEnd,
       {{"pending", 1}},
       2,
       "CRITICAL: failing: d (n is 1, threshold 5: worn, plan to replace, n is 1, threshold 5: "
       "failure predicted, n is 1, threshold 5: worn, plan to replace, 1 sector pending)"},
      {kStart + invalid + kEnd, {}, 0, "OK: 1 drive, no threshold reached"},
      {failed + kStart + worn + kEnd, none, 3,
       "UNKNOWN: not read: f; worn: d (n is 1, threshold 5: worn, plan to replace)"},
      {kStart + "SmartDeviceEnd:::d:::True\n", none, 2,
       "CRITICAL: failing: d (the drive's own self-assessment: failed)"},
      {"GetSMARTFailed::0\n" + failed + kStart + failing + kEnd, none, 2,
       "CRITICAL: failing: d (n is 1, threshold 5: failure predicted); not read: (no path), f"},
      {kStart + failing + kEnd + kStart, none, 2,
       "CRITICAL: failing: d (n is 1, threshold 5: failure predicted)"},
      {kStart + kAttribute + kEnd + "?\n", none, 3, "UNKNOWN: 1 drive"},
      {"GetSMARTFailed:\x1B\u202E:0\n", none, 3, "UNKNOWN: not read: \uFFFD\uFFFD"},
  };
  for (const auto& [bytes, sectors, status, expected] : kRows) {
    drives::Host host = drives::ParseReport(bytes);
    for (drives::Drive& drive : host.drives) {
      std::vector<drives::LossCount>& losses = drive.recorded.emplace().losses;
      for (const auto& [name, count] : sectors) losses.push_back({.name = name, .count = count});
    }
    const auto [verdict, summary] = views::Check(host, {});
    EXPECT_EQ(static_cast<int>(verdict), status) << expected;
    EXPECT_EQ(summary.substr(0, summary.find(" | ")), "smartprobe " + expected);
  }
  EXPECT_EQ(views::Check({}, {"a\x1B|", "c"}).summary, "smartprobe UNKNOWN: a\uFFFD/, c");
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
  return Replaced(colored, "\x1B\\[([0-9]+)m", "<&>");
}

TEST(Report, AsJson) {
  EXPECT_EQ(views::JsonText(drives::ParseReport(kOdd), "1.2.3"),
            R"({"drives":[
{"device":"d","product":"\u00A0\"q\\:::x ","revision":"  r\u001B[\u028E ","capacity":"1.00 TB","serial":"  s\u0000\uFFFD\uFFFD\uFFFD ","protocol":"ATA","threshold_exceeded":true,"health":"failing","reasons":["the drive's own self-assessment: failed","First is 100, threshold 255: worn, plan to replace","Off\u00A0Tra\uFFFDk is 21, threshold 255: failure predicted","a:::b is 0, threshold 253: worn, plan to replace"],"attributes":[{"id":5,"name":"First","flags":0,"flags_ata":0,"value":100,"threshold":255,"valid":true,"pre_failure":false,"reached":true},{"id":5,"name":"Off\u00A0Tra\u001Bk","flags":13056,"flags_ata":51,"value":21,"threshold":255,"valid":true,"pre_failure":true,"reached":true},{"id":255,"name":"a:::b","flags":65535,"flags_ata":65535,"value":0,"threshold":253,"valid":false,"pre_failure":false,"reached":true},{"id":5,"name":"n","flags":0,"flags_ata":0,"value":254,"threshold":254,"valid":false,"pre_failure":true,"reached":false}]},
{"device":"d","product":"","revision":"01234567890123456789012345678901234567890123456789012345678901234","capacity":"","serial":"","protocol":"ATA","threshold_exceeded":false,"health":"no attributes","reasons":[],"attributes":[]}
],"not_read":["d","/dev/a\"\\\u0001\u009B\u061C\u200D\u200E\u200F\u2028\u202E\u202C\u202F\u2065\u2066\u2069\u206A",""],"version":"1.2.3"}
)");
}

// What describes the series is for the real reader of them to judge.
TEST(Report, AsPrometheus) {
  const std::string samples = Replaced(views::MetricsText(drives::ParseReport(kOdd)), "#.*\n", "");
  const std::string drive = R"(device="d",product=" \"q\\:::x",serial="s����")";
  const std::string expected = R"(smartprobe_drives_read 2
smartprobe_drives_not_read 3
smartprobe_drive_info{@,revision="r�[ʎ",capacity="1.00 TB",protocol="ATA"} 1
smartprobe_drive_info{device="d",drive="1",revision="012345678901234567890123456789012345678901234567890123456789012…",protocol="ATA"} 1
smartprobe_drive_threshold_exceeded{@} 1
smartprobe_drive_threshold_exceeded{device="d",drive="1"} 0
smartprobe_drive_attributes{@} 4
smartprobe_drive_attributes{device="d",drive="1"} 0
smartprobe_drive_health{@,grade="failing"} 1
smartprobe_drive_health{device="d",drive="1",grade="no attributes"} 1
smartprobe_drive_health{device="d",drive="2",grade="not read"} 1
smartprobe_drive_health{device="/dev/a\"\\%",grade="not read"} 1
smartprobe_drive_health{grade="not read"} 1
smartprobe_drive_read_failed{@} 0
smartprobe_drive_read_failed{device="d",drive="1"} 0
smartprobe_drive_read_failed{device="d",drive="2"} 1
smartprobe_drive_read_failed{device="/dev/a\"\\%"} 1
smartprobe_drive_read_failed{} 1
smartprobe_attribute_value{@,id="5",name="Off Tra�k",kind="pre-failure"} 21
smartprobe_attribute_value{@,id="255",name="a:::b",kind="life-span"} 0
smartprobe_attribute_threshold{@,id="5",name="Off Tra�k",kind="pre-failure"} 255
smartprobe_attribute_threshold{@,id="255",name="a:::b",kind="life-span"} 253
smartprobe_attribute_reached{@,id="5",name="Off Tra�k",kind="pre-failure"} 1
smartprobe_attribute_reached{@,id="255",name="a:::b",kind="life-span"} 1
)";
  const auto withDrive = Replaced(expected, "@", drive);
  EXPECT_EQ(samples, Replaced(withDrive, "%", kReplaced));
}

TEST(Report, AsTable) {
  EXPECT_EQ(Marked(views::TableText(drives::ParseReport(kOdd), {.hasColors = true})),
            R"(<31>d: failing: the drive's own self-assessment: failed; First is 100, threshold<0>
  <31>255: worn, plan to replace; Off Tra�k is 21, threshold 255: failure predicted;<0>
  <31>a:::b is 0, threshold 253: worn, plan to replace<0>
   "q\:::x, revision r�[ʎ, 1.00 TB, serial s����
  ID  Name       Value  Thresh.  Kind       Status
<33>   5  First        100      255  life-span  worn<0>
<31>   5  Off Tra�k     21      255  pre-fail   failing<0>
<33> 255  a:::b          0      253  life-span  worn<0>
   5  n            254      254  pre-fail   OK

<33>d: no attributes<0>
  revision 01234567890123456789012345678901234567890123456789012345678901234
)" + kNotReadOdd);
}

// A report of the widest texts that a drive can give, with counts and all that a recording adds.
drives::Host Wide() {
  const std::string wide =
      "SmartDeviceStart:::/dev/rsdaa:::" + std::string(255, 'p') +
      ":::87654321:::1023.99 GB:::" + std::string(20, 's') + "\n" +
      "SMARTStatus:::255:::" + std::string(34, 'n') +
      ":::0:::No Data:::254 (Invalid):::" + kWornStatus +
      "\nSMARTStatus:::187:::Unknown Attribute:::0:::1:::2:::" + kFailingStatus +
      "\nSmartDeviceEnd:::/dev/rsdaa:::True\n";
  drives::Host host = drives::ParseReport(wide);
  drives::Drive& drive = host.drives.at(0);
  drive.attributes.at(0).counts = {100, (std::uint64_t{1} << 48) - 1};
  drive.recorded = {.temperature = 100,
                    .losses = {{5, "reallocated", true, 65535}, {197, "pending", true, 4294967295}},
                    .powerOnHours = 262800,
                    .powerCycles = 4294967295,
                    .rotationRate = 15000,
                    .formFactor = "less than 1.8 inch",
                    .linkSpeed = "6.0 Gb/s"};
  drive.recorded->date = std::chrono::sys_seconds(std::chrono::seconds(1795622523));
  host.notRead = {{"/dev/rsdb", std::string(40, 'p'), std::string(20, 's'), "it hangs"}};
  host.recorded = {{"sdc"},
                   {"nvme0n1", "nvme1n1", "nvme2n1", "nvme3n1", "nvme4n1", "nvme5n1", "nvme6n1"}};
  return host;
}

TEST(Report, FitsTheScreen) {
  const auto rows = [](std::size_t columns) {
    const std::string brief = views::BriefText(Wide(), {.columns = columns});
    return brief.substr(0, brief.find("\nCould not be read"));
  };
  EXPECT_EQ(rows(80) + rows(45) + views::TableText(Wide(), {.columns = 79}),
            R"(Device      Product              Capacity  Serial number          Temp.  Health
/dev/rsdaa  pppppppppppppppp…  1023.99 GB  ssssssssssssssssssss  100 °C  failing
  the drive's own self-assessment: failed; attribute 187 is 1, threshold 2:
  failure predicted; 65535 sectors reallocated, 4294967295 pending; failing
  soon: replace it; 100 °C
Device      Product   Serial number   Health
/dev/rsdaa  ppppppp…  sssssssssssss…  failing
  the drive's own self-assessment: failed;
  attribute 187 is 1, threshold 2: failure
  predicted; 65535 sectors reallocated,
  4294967295 pending; failing soon: replace
  it; 100 °C
/dev/rsdaa: failing: the drive's own self-assessment: failed; attribute 187 is
  1, threshold 2: failure predicted; 65535 sectors reallocated, 4294967295
  pending; failing soon: replace it; 100 °C
  ppppppppppppppppppppppppppppppppppppppp…, revision 87654321, 1023.99 GB,
  serial ssssssssssssssssssss, 15000 rpm, on for 262800 hours (30.0 years),
  4294967295 power cycles, 100 °C, read 2026-11-25 16:02 UTC
  ID  Name           Value  Worst  Thresh.              Raw  Kind       Status
 255  nnnnnnnnnnnn…    100    100      254  281474976710655  life-span  OK
 187  attribute 187      1      -        2                -  pre-fail   failing

Could not be read:
  /dev/rsdb, pppppppppppppppppppppppppppppppppppppppp, serial
  ssssssssssssssssssss: it hangs

S.M.A.R.T. is missing or off, not read: sdc
Not asked: nvme0n1, nvme1n1, nvme2n1, nvme3n1, nvme4n1, nvme5n1, nvme6n1
)");
}

TEST(Report, AsPage) {
  drives::Host host = Wide();
  host.drives.at(0).product = "<b title='\"'>&amp;";
  host.drives.at(0).attributes.at(0).name = "<n>";
  host.recorded->withoutSMART = {"<s>"};
  host.damage = {7, "<i>"};
  host.drives.insert(host.drives.begin(), drives::Drive())->device = "/dev/rsdz";
  std::string page = views::PageText(host, std::chrono::sys_days(std::chrono::days(1)));
  for (std::size_t facts = 0; (facts = page.find("<dl>")) != std::string::npos;) {
    page.erase(facts, page.find("</dl>\n") + 6 - facts);
  }
  EXPECT_EQ(page.substr(page.find("<h1>")),
            R"(<h1>Drives: 1 failing, 1 not read, 1 no attributes</h1>
<p class="weak">Page of 1970-01-02 00:00 UTC.</p>
<h2>What is wrong</h2>
<ul>
<li class="failing">The report is damaged; this is what came before. line 7: &lt;i&gt;</li>
<li class="failing">failing: <a href="#drive2">&lt;b title=&#39;&quot;&#39;&gt;&amp;amp; (/dev/rsdaa)</a>
<ul>
<li class="failing">the drive&#39;s own self-assessment: failed<p class="weak">Save the data of a drive that is failing, and replace it.</p></li>
<li class="failing">attribute 187 is 1, threshold 2: failure predicted<p class="weak">Save the data of a drive that is failing, and replace it.</p></li>
<li class="warning">65535 sectors reallocated, 4294967295 pending; failing soon: replace it<p class="weak">Save the data of a drive with early signs of failure, and replace it if they get worse. In a study of 100,000 hard disks, one with a pending sector was 16 times as likely to fail within 60 days.</p></li>
<li class="warning">100 °C<p class="weak">A hot drive needs more air: look at fans and dust.</p></li>
</ul></li>
<li class="failing">could not be read: /dev/rsdb, pppppppppppppppppppppppppppppppppppppppp, serial ssssssssssssssssssss: it hangs<p class="weak">A drive that cannot be read may be failing: look at its cables, and at journalctl -k.</p></li>
<li class="warning">no attributes: <a href="#drive1">/dev/rsdz</a><p class="weak">A drive without attributes may fail without a sign: keep copies of its data.</p></li>
</ul>
<h2>Drives</h2>
<section class="failing" id="drive2">
<h3>&lt;b title=&#39;&quot;&#39;&gt;&amp;amp;: <span class="failing">failing</span></h3>
<p class="failing">the drive&#39;s own self-assessment: failed; attribute 187 is 1, threshold 2: failure predicted; 65535 sectors reallocated, 4294967295 pending; failing soon: replace it; 100 °C</p>
<table>
<caption>Attributes</caption>
<thead><tr><th scope="col">Name</th><th scope="col">Value</th><th scope="col">Worst</th><th scope="col">Threshold</th><th scope="col">Raw</th></tr></thead>
<tbody>
<tr><th scope="row">255 &lt;n&gt; <small>life-span</small></th><td>100</td><td>100</td><td>254</td><td>281474976710655</td></tr>
<tr class="failing"><th scope="row">187 attribute 187 <small>pre-failure</small> <strong>failing</strong><svg viewBox="0 0 101 10" preserveAspectRatio="none" role="img" aria-label="1 below the threshold"><rect class="room" width="101" height="10"/><rect class="value" y="2" width="1" height="6"/><rect class="limit" x="2" width="1" height="10"/></svg></th><td>1</td><td></td><td>2</td><td></td></tr>
</tbody>
</table>
</section>
<section class="warning" id="drive1">
<h3>/dev/rsdz: <span class="warning">no attributes</span></h3>
</section>
<details>
<summary>What these attributes mean</summary>
<ul>
<li>187: Errors that the drive could not correct and reported. A sign of failure.</li>
</ul>
</details>
<h2>Not in this report</h2>
<p>S.M.A.R.T. is missing or off, not read: &lt;s&gt;</p>
<p>Not asked: nvme0n1, nvme1n1, nvme2n1, nvme3n1, nvme4n1, nvme5n1, nvme6n1</p>
</body>
</html>
)");
}

}  // namespace
