#include "report/report_lines.h"

#include <array>
#include <optional>

#include "report/figures.h"
#include "report/text.h"

namespace report {
namespace {

constexpr std::string_view kSeparator = ":::";
constexpr std::string_view kFailureEnd = ":0";

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

// The field before the first separator; `fields` keeps what comes after it.
std::string_view TakeFirst(std::string_view& fields) {
  const std::size_t end = fields.find(kSeparator);
  if (end == std::string_view::npos) throw BadLine("too few fields");
  const std::string_view field = fields.substr(0, end);
  fields.remove_prefix(end + kSeparator.size());
  return field;
}

// The field after the last separator; `fields` keeps what comes before it.
std::string_view TakeLast(std::string_view& fields) {
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
  const unsigned id = Checked(ParseDecimal(text, UINT8_MAX), "the identifier is no number to 255");
  if (id == 0) throw BadLine("the identifier is 0");
  return static_cast<std::uint8_t>(id);
}

}  // namespace

Line ParseTag(std::string_view line) {
  for (const Tag& tag : kTags) {
    if (line.starts_with(tag.text)) return {tag.kind, line.substr(tag.text.size())};
  }
  throw BadLine("not a line of a report");
}

Drive ParseStart(std::string_view fields) {
  Drive drive;
  drive.device = ToText(TakeFirst(fields));
  drive.serial = ToText(TakeLast(fields));
  drive.capacity = ToText(TakeLast(fields));
  drive.revision = ToText(TakeLast(fields));
  drive.product = ToText(fields);
  return drive;
}

Attribute ParseAttribute(std::string_view fields) {
  Attribute attribute;
  attribute.id = ParseId(TakeFirst(fields));
  const Status& status = ParseStatus(TakeLast(fields));
  attribute.preFailure = status.preFailure;
  attribute.reached = status.reached;
  const auto threshold =
      Checked(ParseThreshold(TakeLast(fields)), "the threshold is no number to 255");
  const auto value = Checked(ParseValue(TakeLast(fields)), "the value is no number to 255");
  attribute.threshold = threshold.number;
  attribute.value = value.number;
  attribute.valid = value.valid && threshold.valid;
  attribute.flags = static_cast<std::uint16_t>(
      Checked(ParseDecimal(TakeLast(fields), UINT16_MAX), "the flags are no number to 65535"));
  attribute.name = ToText(fields);
  return attribute;
}

EndLine ParseEnd(std::string_view fields) {
  const std::string_view answer = TakeLast(fields);
  if (answer != "True" && answer != "False") throw BadLine("neither True nor False");
  return {ToText(fields), answer == "True"};
}

std::string ParseFailure(std::string_view fields) {
  if (!fields.ends_with(kFailureEnd)) throw BadLine("a failure that does not end with :0");
  fields.remove_suffix(kFailureEnd.size());
  return ToText(fields);
}

}  // namespace report
