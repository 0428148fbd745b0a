// Recorded machines: which files make a machine, which machine, and what is said of the
// others. The program around them has a test of its own.
#include "machines/recorded/read_recording.h"

#include "machines/recorded/recording_format.h"
#include "tests/support.h"

namespace {

using namespace std::string_literals;
using machines::ReadRecording;
using platform::Property;
using test::Repeated;

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
std::string RecordedDrive(const std::string& pairs) {
  return "<key>RecordedDrive</key><dict>" + pairs + "</dict>";
}
std::string DriveOf(const std::string& pairs) {
  return List(Named("Root", Children(Named("PRT0", RecordedDrive(pairs)))));
}
std::string Nested(std::size_t levels) {
  return Value(Repeated(levels - 1, "<array>") + Repeated(levels - 1, "</array>"));
}

std::string MessageFor(const std::string& file) {
  try {
    ReadRecording(file);
  } catch (const machines::RecordingError& error) {
    return error.what();
  }
  return "accepted";
}

// A text has one part of the message that it must get.
TEST(RecordedMachine, BadFilesAreRefusedWithTheReasonAndThePlace) {
  const std::pair<std::string, std::string> kCases[] = {
      {"", "the file is empty"},
      {"bplist00\xD0", "plistutil -i FILE"},
      {"{ \"k\" = 1; }", "line 1: this is not XML"},
      {"<?xml version='1.0'?>\n<!-- -->", "not an XML property list"},
      {std::string((std::size_t{64} << 20) + 1, ' '), "larger than 64 MiB"},
      {"<dict/>", "line 1: <dict> before <plist>"},
      {List(""), "an empty <plist>"},
      {List("<dict/><dict/>"), "a second value in <plist>"},
      {Root("\n<key>a</key>\ntext"), "line 3: text between elements"},
      {Root("\n<key>a</key>\n"), "line 3: a <key> without a value"},
      {Root("<true/>"), "<true> where a <key> is due"},
      {Value("<array><key>a</key></array>"), "<key> outside <dict>"},
      {Root("<key>a</key><true/>\n<key>&#97;</key><true/>"), "line 2: the <key> \"a\" twice in"},
      {Value("<string>a\n<true/></string>"), "line 2: <true> inside <string>"},
      {"<plist>\n<string>a", "line 2: the file ends inside <string>"},
      {Nested(257), "more than 256 levels"},
      {Value("<array>" + Repeated(1000000, "<true/>") + "</array>"), "more than 1000000 elements"},
      {List("<array>" + Repeated(1000, "<dict a=''/>") + "</array>"), "more than 1000 attributes"},
      // What XML does not allow, or expat by itself would
      {"\n<!DOCTYPE plist [<!ELEMENT e EMPTY> ]>" + Text("a"), "line 2: a document type with"},
      {"<!DOCTYPE plist SYSTEM 'p.dtd'><plist a='&foo;'/>", "a reference in an attribute"},
      {"<!DOCTYPE plist SYSTEM 'p'>\n" + Text("AT&foo;T"), "line 2: an unknown reference, &foo;"},
      {Text("\n\x1B"), "line 2: a control character, which XML does not allow; tr -d"},
      {"<?xml version='1.0' encoding='ISO-8859-1'?>" + Text("\n\xE9"), "line 2: text that is not"},
      {Text("\uFFFE"), "U+FFFE"},
      {Value("<!-- -- --><true/>"), "not well-formed"},
      {Value("<integer>12abc</integer>"), "\"12abc\" is no <integer>"},
      {Value("<integer>18446744073709551616</integer>"), "is no <integer>"},
      {Value("<real>+-1</real>"), "is no <real>"},
      {Value("<date>2001-02-29T00:00:00Z</date>"), "is no <date>"},
      {Value("<date>2001-01-01T24:00:00Z</date>"), "is no <date>"},
      {Value("<data>QUJ</data>"), "is no <data>"},
      {Value("<data>QQ==QUJD</data>"), "is no <data>"},
      {List(Named("A", Children(Named("B", "") + Named("B", Children("<true/>"))))),
       "/A/B (child 2)/child 1: not a <dict>"},
      {List(Named("a\n\u009B", "<key>IOObjectClass</key><true/>")),
       "/a\uFFFD\uFFFD: IOObjectClass is not a <string>"},
      {Root("<key>IORegistryEntryChildren</key><dict/>"), "Children is not an <array>"},
      {DriveOf("<key>Data</key><data>" + Repeated(171, "QUJD") + "</data>"),
       "/Root/PRT0: RecordedDrive: Data is longer than 512 bytes"},
      {DriveOf("<key>EnableFails</key><integer>1</integer>"), "is not <true/> or <false/>"},
      {DriveOf("<key>Serial</key><string/>"), "RecordedDrive: unknown key Serial"},
  };
  for (const auto& [file, message] : kCases) {
    const std::string given = MessageFor(file);
    EXPECT_NE(given.find(message), std::string::npos) << given << " instead of " << message;
    EXPECT_EQ(given.find('\n'), std::string::npos);
  }
}

TEST(RecordedMachine, ValuesKeepTheirMeaning) {
  EXPECT_EQ(MessageFor(Nested(256)), "accepted");
  constexpr auto k32 = platform::IntegerNumber;
  const std::pair<std::string, Property> kCases[] = {
      {Value("<integer> 32\r\n</integer>"), {k32(32)}},
      {Value("<integer>0x80000000</integer>"), {platform::Number{kCFNumberSInt64Type, 1U << 31}}},
      {Value("<integer>18446744073709551615</integer>"), {k32(-1)}},
      {Value("<integer>-9223372036854775808</integer>"), {k32(INT64_MIN)}},
      {Value("<array><false/><real>+0.1</real><dict><key/><true/></dict></array>"),
       {platform::Array{
           {false}, {platform::Float64Number(0.1)}, {platform::Dictionary{{"", {true}}}}}}},
      {Value("<date>2004-02-29T00:00:01Z</date>"), {test::Date(99705601)}},
      {Value("<date>1900-01-01T23:59:59Z</date>"), {test::Date(-3187209601)}},
      {Value("<data>\n\tQU\r\n\tJD RA==\n</data>"), {platform::Data{'A', 'B', 'C', 'D'}}},
      {Text(" a\r\nb<!-- </string> --><![CDATA[</string>&amp;\r]]>c<?x ?>&lt;&#x20AC;"),
       {" a\nb</string>&amp;\nc<\u20AC"s}},
      {"\xEF\xBB\xBF \n<?xml version='1.0' encoding='ISO-8859-1'?>" + Text("\u00E9"), {"\u00E9"s}},
      {"<!DOCTYPE plist SYSTEM 'p'><plist><dict a=\"/>\" ><key>k</key\n><string/></dict></plist>\n"
       "<!-- end -->",
       {""s}},
  };
  for (const auto& [file, value] : kCases) {
    const platform::Dictionary expected = {{"k", value}};
    EXPECT_EQ(ReadRecording(file).roots.at(0).properties, expected) << file;
  }
}

TEST(RecordedMachine, ProductVersionOfTheFirstRootIsTheSystemVersion) {
  const auto read = [](const std::string& text) {
    const std::string pair = "<key>ProductVersion</key><string>" + text + "</string>";
    return ReadRecording(List("<array><dict>" + pair + "</dict>" + Named("B", pair) + "</array>"));
  };
  const std::pair<const char*, SInt32> kVersions[] = {
      {"10.5.8", 0x1058}, {"10.4.11", 0x1049}, {"9", 0x0900}, {"99.0.99999999999", 0x9909}};
  for (const auto& [text, version] : kVersions) {
    const platform::Machine machine = read(text);
    EXPECT_EQ(machine.systemVersion, version) << text;
    EXPECT_TRUE(machine.roots[0].properties.empty());
    EXPECT_EQ(machine.roots[1].properties.size(), 1U);
  }
  for (const char* text : {"100.1", "", "10.", ".5", "10.5.8.1", "10.5 "}) {
    EXPECT_THROW(read(text), machines::RecordingError) << text;
  }
  EXPECT_EQ(ReadRecording(Root("")).systemVersion, 0x1068);
}

}  // namespace
