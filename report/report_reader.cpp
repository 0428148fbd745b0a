#include "report/report_reader.h"

#include <cerrno>
#include <optional>
#include <system_error>
#include <utility>

#include "report/report_lines.h"

namespace report {
namespace {

class Lines {
 public:
  explicit Lines(std::FILE* file) : file_(file) {}

  // The next line without its line feed, or false at the end of the file.
  bool Next(std::string& line) {
    ++number_;
    line.clear();
    for (int c = getc_unlocked(file_); c != EOF; c = getc_unlocked(file_)) {
      if (c == '\n') return true;
      if (line.size() == kMaxLineLength) throw BadLine("the line is longer than 1 MiB");
      line += static_cast<char>(c);
    }
    if (std::ferror(file_) != 0) throw std::system_error(errno, std::generic_category());
    if (!line.empty()) throw BadLine("the file ends inside the line");
    return false;
  }

  std::size_t Number() const { return number_; }

 private:
  std::FILE* file_;
  std::size_t number_ = 0;
};

// What the lines so far amount to.
class Assembly {
 public:
  explicit Assembly(Listener& listener) : listener_(listener) {}

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
        listener_.OnFailed(ParseFailure(line.fields));
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
    listener_.OnDrive(*std::exchange(drive_, std::nullopt));
  }

  Listener& listener_;
  std::optional<Drive> drive_;
};

}  // namespace

void ReadReport(std::FILE* file, Listener& listener) {
  Lines lines(file);
  Assembly assembly(listener);
  try {
    std::string line;
    while (lines.Next(line)) assembly.Add(line);
    assembly.End();
  } catch (const BadLine& error) {
    throw DamagedReport(lines.Number(), error.what());
  }
}

}  // namespace report
