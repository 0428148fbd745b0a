// The fields of the report's lines. In what order lines may come is told in
// report_reader.cpp.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

#include "report/report.h"

namespace report {

// A line that no report has; says what is wrong with it.
struct BadLine : std::runtime_error {
  using std::runtime_error::runtime_error;
};

enum class LineKind { kStart, kAttribute, kEnd, kFailure };

struct Line {
  LineKind kind;
  std::string_view fields;  // the part of the line after the tag, borrowed from it
};

struct EndLine {
  std::string device;
  bool thresholdExceeded;
};

// Each takes a line without its line feed, or the fields of one of its kind, and throws
// BadLine. Texts are copied, and empty ones allowed.

Line ParseTag(std::string_view line);

// Nothing is escaped: the device ends at the first separator, revision, capacity and
// serial number are the last three fields, and what is between is the product name.
Drive ParseStart(std::string_view fields);

// The identifier is 1 to 255, the status one of the four texts. The name is what is between the
// identifier and the last four fields.
Attribute ParseAttribute(std::string_view fields);

// The device is all before the last separator. Whether it is that of the drive that started is
// for the caller to see.
EndLine ParseEnd(std::string_view fields);

// The failed device.
std::string ParseFailure(std::string_view fields);

}  // namespace report
