#include "drives/report_lines.h"

#include <array>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "base/printable_text.h"
#include "drives/value_texts.h"

namespace drives {
namespace {

// A line that no report has; says what is wrong with it.
struct BadLine : std::runtime_error {
  using std::runtime_error::runtime_error;
};

enum class LineKind { kStart, kAttribute, kEnd, kFailure };

struct Line {
  LineKind kind;
  std::string_view fields;  // what comes after the tag
};

struct EndLine {
  std::string device;
  bool thresholdExceeded;
};

constexpr std::string_view kSeparator = ":::";
constexpr std::string_view kFailureEnd = ":0";
constexpr const char* kTooLarge = "the report is larger than 4 MiB";
constexpr char kNoBreakByte = '\xCA';
constexpr std::string_view kNoBreakSpace = "\u00A0";

struct Tag {
  std::string_view text;
  LineKind kind;
};

constexpr std::array kTags{
    Tag{"SMARTStatus:::", LineKind::kAttribute},
    Tag{"SmartDeviceStart:::", LineKind::kStart},
    Tag{"SmartDeviceEnd:::", LineKind::kEnd},
    Tag{"GetSMARTFailed:", LineKind::kFailure},
};

struct Status {
  std::string_view text;
  bool preFailure;
  bool reached;
};

constexpr std::array kStatuses{
    Status{"Pre-Fail:OK", true, false},
    Status{"Pre-Fail:Pre-Failure Warning: Imminent loss of data predicted", true, true},
    Status{"Life-Span:OK", false, false},
    // The report spells it so.
    Status{"Life-Span:Advisory Condition: Attribute has exeeded intended life expectancy", false,
           true},
};

// `bytes` as UTF-8: a byte 0xCA that begins no character is a no-break space, as the probe
// prints it in names of its own; what else is no text becomes U+FFFD.
std::string ToText(std::string_view bytes) {
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i++) {
    const bool beginsCharacter = i + 1 < bytes.size() && (bytes[i + 1] & 0xC0) == 0x80;
    if (bytes[i] == kNoBreakByte && !beginsCharacter) {
      text += kNoBreakSpace;
    } else {
      text += bytes[i];
    }
  }
  return base::ValidUTF8(text);
}

// The field before the first separator; `fields` keeps what comes after it.
std::string_view PopFirst(std::string_view& fields) {
  const std::size_t end = fields.find(kSeparator);
  if (end == std::string_view::npos) throw BadLine("too few fields");
  const std::string_view field = fields.substr(0, end);
  fields.remove_prefix(end + kSeparator.size());
  return field;
}

// The field after the last separator; `fields` keeps what comes before it.
std::string_view PopLast(std::string_view& fields) {
  const std::size_t start = fields.rfind(kSeparator);
  if (start == std::string_view::npos) throw BadLine("too few fields");
  const std::string_view field = fields.substr(start + kSeparator.size());
  fields = fields.substr(0, start);
  return field;
}

template <typename T>
T Checked(const std::optional<T>& field, const char* what) {
  if (!field) throw BadLine(what);
  return *field;
}

const Status& ParseStatus(std::string_view text) {
  for (const Status& status : kStatuses) {
    if (status.text == text) return status;
  }
  throw BadLine("the status is none of the four");
}

std::uint8_t ParseId(std::string_view text) {
  const auto id = Checked(ParseDecimal<std::uint8_t>(text), "the identifier is no number to 255");
  if (id == 0) throw BadLine("the identifier is 0");
  return id;
}

Line ParseTag(std::string_view line) {
  for (const Tag& tag : kTags) {
    if (line.starts_with(tag.text)) return {tag.kind, line.substr(tag.text.size())};
  }
  throw BadLine("not a line of a report");
}

// Nothing is escaped: the device ends at the first separator, revision, capacity and serial
// number are the last three fields, and what is between is the product name.
Drive ParseStart(std::string_view fields) {
  Drive drive;
  drive.device = ToText(PopFirst(fields));
  drive.serial = ToText(PopLast(fields));
  drive.capacity = ToText(PopLast(fields));
  drive.revision = ToText(PopLast(fields));
  drive.product = ToText(fields);
  return drive;
}

// The name is what is between the identifier and the last four fields.
Attribute ParseAttribute(std::string_view fields) {
  Attribute attribute;
  attribute.id = ParseId(PopFirst(fields));
  const Status& status = ParseStatus(PopLast(fields));
  attribute.preFailure = status.preFailure;
  attribute.warns = status.reached;
  const auto threshold =
      Checked(ParseThreshold(PopLast(fields)), "the threshold is no number to 255");
  const auto value = Checked(ParseValue(PopLast(fields)), "the value is no number to 255");
  attribute.threshold = threshold.number;
  attribute.value = value.number;
  attribute.valid = value.valid && threshold.valid;
  attribute.flags =
      Checked(ParseDecimal<std::uint16_t>(PopLast(fields)), "the flags are no number to 65535");
  attribute.name = ToText(fields);
  return attribute;
}

// The device is all before the last separator.
EndLine ParseEnd(std::string_view fields) {
  const std::string_view answer = PopLast(fields);
  if (answer != "True" && answer != "False") throw BadLine("neither True nor False");
  return {ToText(fields), answer == "True"};
}

// The device that could not be read.
std::string ParseFailure(std::string_view fields) {
  if (!fields.ends_with(kFailureEnd)) throw BadLine("a failure that does not end with :0");
  fields.remove_suffix(kFailureEnd.size());
  return ToText(fields);
}

// The line at the start of `rest`, without its end; `rest` keeps what comes after it.
std::string_view PopLine(std::string_view& rest, std::string_view lineEnd, bool isCut) {
  const std::size_t end = rest.find(lineEnd);
  if (end == std::string_view::npos) {
    throw BadLine(isCut ? kTooLarge : "the file ends inside the line");
  }
  const std::string_view line = rest.substr(0, end);
  rest.remove_prefix(end + lineEnd.size());
  return line;
}

// Adds what the line says. `drive` is the one that has not ended. Throws BadLine where the line may
// not come.
void Add(std::string_view text, Host& host, std::optional<Drive>& drive) {
  const Line line = ParseTag(text);
  if (line.kind == LineKind::kStart || line.kind == LineKind::kFailure) {
    if (drive) throw BadLine("inside a drive that has not ended");
    if (line.kind == LineKind::kStart) {
      drive = ParseStart(line.fields);
    } else {
      host.notRead.push_back({ParseFailure(line.fields)});
    }
  } else if (line.kind == LineKind::kAttribute) {
    if (!drive) throw BadLine("an attribute outside a drive");
    if (drive->attributes.size() == kMaxAttributes) throw BadLine("more than 30 attributes");
    drive->attributes.push_back(ParseAttribute(line.fields));
  } else {
    if (!drive) throw BadLine("the end of a drive that has not started");
    const EndLine end = ParseEnd(line.fields);
    if (end.device != drive->device) throw BadLine("the end of another drive");
    drive->thresholdExceeded = end.thresholdExceeded;
    host.drives.push_back(*std::exchange(drive, std::nullopt));
  }
}

// A carriage return ends a line only where one stands before every line feed, as after a way
// through a system that ends lines so: a field may end in one.
std::string_view LineEndOf(std::string_view bytes) {
  for (std::size_t i = bytes.find('\n'); i != std::string_view::npos; i = bytes.find('\n', i + 1)) {
    if (i == 0 || bytes[i - 1] != '\r') return "\n";
  }
  return "\r\n";
}

}  // namespace

Host ParseReport(std::string_view bytes) {
  Host host;
  std::optional<Drive> drive;
  const bool isCut = bytes.size() > kMaxReportSize;
  std::string_view rest = bytes.substr(0, kMaxReportSize);
  const std::string_view lineEnd = LineEndOf(rest);
  std::size_t number = 1;
  try {
    for (; !rest.empty(); ++number) Add(PopLine(rest, lineEnd, isCut), host, drive);
    if (isCut) throw BadLine(kTooLarge);
    if (drive) throw BadLine("the file ends inside a drive");
  } catch (const BadLine& error) {
    host.damage = Damage{number, error.what()};
  }
  return host;
}

}  // namespace drives
