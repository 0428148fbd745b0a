// Recorded machines: which files make a machine, which machine, and what is said of the
// others. The program around them has a test of its own.
#include "machines/recorded/recorded_machine.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>

#include "machines/recorded/recording_error.h"

namespace {

using namespace std::string_literals;
using machines::ReadRecordedMachine;
using platform::Property;

std::string Repeated(int times, const std::string& text) {
  std::string repeated;
  for (int i = 0; i < times; i++) repeated += text;
  return repeated;
}

std::string List(const std::string& value) { return "<plist version='1.0'>" + value + "</plist>"; }
std::string Root(const std::string& pairs) { return List("<dict>" + pairs + "</dict>"); }
std::string Value(const std::string& value) { return Root("<key>k</key>" + value); }
std::string Text(const std::string& text) { return Value("<string>" + text + "</string>"); }
std::string Named(const std::string& name, const std::string& pairs) {
  return "<dict><key>IORegistryEntryName</key><string>" + name + "</string>" + pairs + "</dict>";
}
std::string Children(const std::string& entries) {
  return "<key>IORegistryEntryChildren</key><array>" + entries + "</array>";
}
std::string DriveOf(const std::string& pairs) {
  const std::string drive = "<key>RecordedDrive</key><dict>" + pairs + "</dict>";
  return List(Named("Root", Children(Named("PCI0", Children(Named("PRT0", drive))))));
}
std::string Nested(int levels) {
  return Value(Repeated(levels - 1, "<array>") + Repeated(levels - 1, "</array>"));
}

std::string MessageFor(const std::string& file) {
  try {
    ReadRecordedMachine(file);
  } catch (const machines::RecordingError& error) {
    return error.what();
  }
  return "accepted";
}

// A text has one part of the message that it must get.
TEST(RecordedMachine, BadFilesAreRefusedWithTheReasonAndThePlace) {
  const struct {
    std::string file, message;
  } kCases[] = {
      {"", "the file is empty"},
      {"bplist00\xD0", "plistutil -i FILE"},
      {"{ \"k\" = 1; }", "not an XML property list"},
      {"<?xml version='1.0'?>\n<!-- -->", "not an XML property list"},
      {std::string((std::size_t{64} << 20) + 1, ' '), "larger than 64 MiB"},
      {"<html><body/></html>", "line 1: <html> is no element"},
      {"<dict/>", "line 1: <dict> before <plist>"},
      {List(""), "an empty <plist>"},
      {List("<dict/><dict/>"), "a second value in <plist>"},
      {Root("") + "\n<plist/>", "line 2: <plist> after </plist>"},
      {Root("") + "\ntrailing", "line 2: text between elements"},
      {Root("\n<key>a</key>\n"), "line 3: a <key> without a value"},
      {Root("<key>a</key><key>b</key>"), "a second <key>"},
      {Root("<true/>"), "<true> where a <key> is due"},
      {Value("<array><key>a</key></array>"), "<key> outside <dict>"},
      {Root("\n<key>a</key><true/>\n<key>&#97;</key><true/>"), "line 3: a <key> that is in"},
      {Value("<array>\n</dict>"), "line 2: </dict> closes nothing"},
      {Value("<string>a\n<true/></string>"), "line 2: <true> inside <string>"},
      {Value("<string>a</key>"), "</key> inside <string>"},
      {Value("</true/>"), "a tag with a '/' at both ends"},
      {Value("<string"), "a '<' inside a tag"},
      {"<plist><string>a", "the file ends inside <string>"},
      {"<plist a='", "the file ends inside a tag"},
      {"<!DOCTYPE plist [ <!-- ]> --> ' ]>", "the file ends inside the document type"},
      {Text("<!DOCTYPE plist>"), "a <! that begins nothing"},
      {"<!DOCTYPE plist [<!ENTITY e 'x'>]>" + Text("&e;"), "character reference &e"},
      {Text("AT&T"), "character reference &T"},
      {Text("&#xD800;"), "character reference &#xD800"},
      {Text("&#x110000;"), "character reference"},
      {Nested(257), "more than 256 levels"},
      {Value("<array>" + Repeated(1000000, "<true/>") + "</array>"), "more than 1000000 elements"},
      {Text("&lt;" + Repeated(1000000, "]]>")), "more than 1000000 elements"},
      {Value("<integer>12abc</integer>"), "\"12abc\" is no <integer>"},
      {Value("<integer/>"), "\"\" is no <integer>"},
      {Value("<integer>18446744073709551616</integer>"), "is no <integer>"},
      {Value("<integer>-9223372036854775809</integer>"), "is no <integer>"},
      {Value("<real>+-1</real>"), "is no <real>"},
      {Value("<real>1e999</real>"), "is no <real>"},
      {Value("<date>2001-02-29T00:00:00Z</date>"), "is no <date>"},
      {Value("<date>2069-01-01T00:00:00Z</date>"), "is no <date>"},
      {Value("<date>2001-01-01T24:00:00Z</date>"), "is no <date>"},
      {Value("<date>2001-01-01</date>"), "is no <date>"},
      {Value("<data>QUJ</data>"), "is no <data>"},
      {Value("<data>QQ==QQ==</data>"), "is no <data>"},
      {Value("<data>QU*D</data>"), "is no <data>"},
      {Value("<true>yes</true>"), "is no <true>"},
      {List("<string>a</string>"), "neither a <dict> nor an <array>"},
      {List("<array><dict/><true/></array>"), "/child 2: not a <dict>"},
      {List(Named("A", Children(Named("B", "") + Named("B", Children("<true/>"))))),
       "/A/B (child 2)/child 1: not a <dict>"},
      {Root("<key>IORegistryEntryName</key><data/>"), "IORegistryEntryName is not a <string>"},
      {Root("<key>IORegistryEntryChildren</key><dict/>"), "Children is not an <array>"},
      {DriveOf("<key>Data</key><data>" + Repeated(171, "QUJD") + "</data>"),
       "/Root/PCI0/PRT0: RecordedDrive: Data is longer than 512 bytes"},
      {DriveOf("<key>Identify</key><string/>"), "RecordedDrive: Identify is not <data>"},
      {DriveOf("<key>EnableFails</key><integer>1</integer>"), "is not <true/> or <false/>"},
      {DriveOf("<key>Serial</key><string/>"), "RecordedDrive: unknown key Serial"},
      {Value("<array><dict><key>a</key><string>\xFF</string></dict></array>"),
       "/child 1: k: a: text that is not UTF-8"},
      {Root("<key>\xC3(</key><true/>"), "text that is not UTF-8"},
      {Text("a&#0;"), "k: text that holds a NUL"},
      {Text("a\0b"s), "k: text that holds a NUL"},
      {List(Named("a\n\x1B\xFF", "<key>IOObjectClass</key><true/>")),
       "/a\uFFFD\uFFFD\uFFFD: IORegistryEntryName: text that is not UTF-8"},
      {Root("<key>ProductVersion</key><integer>10</integer>"), "ProductVersion is not a <string>"},
  };
  for (const auto& [file, message] : kCases) {
    const std::string given = MessageFor(file);
    EXPECT_NE(given.find(message), std::string::npos) << given << " instead of " << message;
    EXPECT_EQ(given.find('\n'), std::string::npos);
  }
}

TEST(RecordedMachine, ValuesKeepTheirMeaning) {
  constexpr auto k32 = platform::IntegerNumber;
  const struct {
    std::string file;
    Property value;
  } kCases[] = {
      {Value("<integer> 32\r\n</integer>"), {k32(32)}},
      {Value("<integer>2147483647</integer>"), {platform::Number{kCFNumberSInt32Type, 0x7FFFFFFF}}},
      {Value("<integer>2147483648</integer>"), {platform::Number{kCFNumberSInt64Type, 1U << 31}}},
      {Value("<integer>18446744073709551615</integer>"), {k32(-1)}},
      {Value("<integer>-9223372036854775808</integer>"), {k32(INT64_MIN)}},
      {Value("<real>+0.1</real>"), {platform::Float64Number(0.1)}},
      {Value("<false/>"), {false}},
      {Value("<date>2004-02-29T00:00:01Z</date>"), {platform::Date{99705601}}},
      {Value("<data>\n\tQU\r\n\tJD RA==\n</data>"), {platform::Data{'A', 'B', 'C', 'D'}}},
      {Value("<dict><key/><array/></dict>"), {platform::Dictionary{{"", {platform::Array{}}}}}},
      {Text(" a\r\nb\rc\t"), {" a\nb\nc\t"s}},
      {Text("\x01&#27;"), {"\x01\x1B"s}},
      {Text("&lt;&amp;&gt;&quot;&apos;&#x20AC;&#8364;&amp;lt;"), {"<&>\"'\u20AC\u20AC&lt;"s}},
      {Text("a<!-- </string> -->b<![CDATA[</string>&amp;\r\n]]]>c<?x </dict>?>"),
       {"ab</string>&amp;\n]c"s}},
      {Text("&lt;]]]]&gt;]]>"), {"<]]]]>]]>"s}},
      {"\xEF\xBB\xBF<?xml version='1.0'?>\r\n" + Text("bom"), {"bom"s}},
      {"<!DOCTYPE plist [<!ENTITY e ']>\"'> <!-- it's ]> --> <?'?> ]>" + Text("subset"),
       {"subset"s}},
      {"<plist><dict a=\"/>\" ><key >k</key\n><string/></dict></plist>\n<!-- end -->", {""s}},
      {Root("<!-- <key>k</key> --><key><![CDATA[k]]></key><string>c</string>"), {"c"s}},
  };
  for (const auto& [file, value] : kCases) {
    const platform::Machine machine = ReadRecordedMachine(file);
    ASSERT_EQ(machine.roots.size(), 1U) << file;
    const Property* found = platform::Find(machine.roots.front().properties, "k");
    ASSERT_NE(found, nullptr) << file;
    EXPECT_EQ(*found, value) << file;
  }
}

// Two roots, the first with a child, each with the same product version.
std::string VersionsEverywhere(const std::string& text) {
  const std::string pair = "<key>ProductVersion</key><string>" + text + "</string>";
  const std::string entry = "<dict>" + pair + "</dict>";
  return List("<array><dict>" + pair + Children(entry) + "</dict>" + entry + "</array>");
}

TEST(RecordedMachine, ProductVersionOfTheFirstRootIsTheSystemVersion) {
  const std::pair<const char*, SInt32> kVersions[] = {
      {"10.5.8", 0x1058}, {"10.4.11", 0x1049}, {"10", 0x1000},
      {"9.2.2", 0x0922},  {"99.0.99", 0x9909}, {"10.99999999999", 0x1090}};
  for (const auto& [text, version] : kVersions) {
    const platform::Machine machine = ReadRecordedMachine(VersionsEverywhere(text));
    EXPECT_EQ(machine.systemVersion, version) << text;
    EXPECT_TRUE(machine.roots[0].properties.empty());
    EXPECT_EQ(machine.roots[0].children[0].properties.size(), 1U);
    EXPECT_EQ(machine.roots[1].properties.size(), 1U);
  }
  for (const char* text : {"100.1", "", "10.", ".5", "10.5.8.1", "10.5 "})
    EXPECT_NE(MessageFor(VersionsEverywhere(text)), "accepted") << text;
  EXPECT_EQ(ReadRecordedMachine(Root("")).systemVersion, 0x1068);
}

TEST(RecordedMachine, ShortBlocksAreFilledWithZeros) {
  const platform::Machine machine = ReadRecordedMachine(
      DriveOf("<key>Data</key><data>AQ==</data><key>Thresholds</key><data>Ag==</data>"));
  platform::Drive* drive = machine.roots[0].children[0].children[0].drive.get();
  EXPECT_EQ(drive->ReadData(), std::optional(platform::Drive::Block{1}));
  EXPECT_EQ(drive->ReadThresholds(), std::optional(platform::Drive::Block{2}));
}

// Each of these takes minutes or gigabytes when a step of the reading is quadratic or
// recursive in the file; the test's time limit is the assertion.
TEST(RecordedMachine, LargeFilesAreReadInLinearTime) {
  std::string keys;
  for (int i = 0; i < 10000; i++)
    keys.append("<key>").append(std::to_string(i)).append("</key><true/>");
  EXPECT_EQ(ReadRecordedMachine(Root(keys)).roots[0].properties.size(), 10000U);
  EXPECT_NE(MessageFor(Root(Repeated(200000, "<key>k</key><true/>"))), "accepted");
  EXPECT_NO_THROW(ReadRecordedMachine(Nested(256)));
  EXPECT_NO_THROW(ReadRecordedMachine(Text(Repeated(5000000, "&amp;"))));
  EXPECT_NO_THROW(ReadRecordedMachine(Text(Repeated(5000000, "&lt;<!---->"))));
  EXPECT_NE(MessageFor("<plist>" + Repeated(5000000, "<array>")), "accepted");
  const std::string children = Children(Repeated(100000, Named("E", "")));
  EXPECT_EQ(ReadRecordedMachine(Root(children)).roots[0].children.size(), 100000U);
}

}  // namespace
