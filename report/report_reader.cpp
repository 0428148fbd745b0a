#include "report/report_reader.h"

#include <optional>
#include <string>
#include <utility>

#include "report/report_lines.h"

namespace report {
namespace {

class Lines {
 public:
  explicit Lines(std::string_view bytes)
      : rest_(bytes.substr(0, kMaxReportSize)), isCut_(bytes.size() > kMaxReportSize) {}

  // The next line without its line feed, or nothing at the end. Throws BadLine.
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
