#include "report/report_reader.h"

#include <array>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "base/printable_text.h"
#include "report/value_texts.h"

namespace report {
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
  attribute.reached = status.reached;
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

// The lines of a report one after the other, up to its end or a cut.
class Lines {
 public:
  explicit Lines(std::string_view bytes)
      : rest_(bytes.substr(0, kMaxReportSize)), isCut_(bytes.size() > kMaxReportSize) {}

  // The next line without its line feed, or nullopt at the end. Throws BadLine.
  std::optional<std::string_view> Next() {
    ++number_;
    const std::size_t end = rest_.find('\n');
    if (end == std::string_view::npos) {
      if (isCut_) throw BadLine("the report is larger than 4 MiB");
      if (!rest_.empty()) throw BadLine("the file ends inside the line");
      return std::nullopt;
    }
    const std::string_view line = rest_.substr(0, end);
    rest_.remove_prefix(end + 1);
    return line;
  }

  std::size_t Number() const { return number_; }

 private:
  std::string_view rest_;
  bool isCut_;
  std::size_t number_ = 0;
};

// Puts the lines together. Each function throws BadLine where one may not come.
class Assembly {
 public:
  explicit Assembly(Report& report) : report_(report) {}

  void Add(std::string_view text) {
    const Line line = ParseTag(text);
    switch (line.kind) {
      case LineKind::kStart:
        CheckOutside();
        drive_ = ParseStart(line.fields);
        return;
      case LineKind::kAttribute:
        AddAttribute(line.fields);
        return;
      case LineKind::kEnd:
        EndDrive(line.fields);
        return;
      case LineKind::kFailure:
        CheckOutside();
        report_.notRead.push_back(ParseFailure(line.fields));
        return;
    }
  }

  void End() const {
    if (drive_) throw BadLine("the file ends inside a drive");
  }

 private:
  void CheckOutside() const {
    if (drive_) throw BadLine("inside a drive that has not ended");
  }

  void AddAttribute(std::string_view fields) {
    if (!drive_) throw BadLine("an attribute outside a drive");
    if (drive_->attributes.size() == kMaxAttributes) throw BadLine("more than 30 attributes");
    drive_->attributes.push_back(ParseAttribute(fields));
  }

  void EndDrive(std::string_view fields) {
    if (!drive_) throw BadLine("the end of a drive that has not started");
    const EndLine end = ParseEnd(fields);
    if (end.device != drive_->device) throw BadLine("the end of another drive");
    drive_->thresholdExceeded = end.thresholdExceeded;
    report_.drives.push_back(*std::exchange(drive_, std::nullopt));
  }

  Report& report_;
  std::optional<Drive> drive_;  // that has not ended
};

}  // namespace

Report ParseReport(std::string_view bytes) {
  Report report;
  Lines lines(bytes);
  Assembly assembly(report);
  try {
    while (const auto line = lines.Next()) assembly.Add(*line);
    assembly.End();
  } catch (const BadLine& error) {
    report.damage = Damage{lines.Number(), error.what()};
  }
  return report;
}

}  // namespace report
