// smartprobe-read: a report for people and for monitoring.
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <system_error>

#include "base/descriptor.h"
#include "base/input.h"
#include "base/printable_text.h"
#include "base/standard_streams.h"
#include "report/check.h"
#include "report/form.h"
#include "report/report_reader.h"
#include "tools/output_file.h"
#include "tools/run_program.h"

namespace {

const tools::CommandLine kCommandLine = {
    "smartprobe-read",
    "Prints a report for people or for monitoring.",
    {{"table", nullptr, "For people (the default)"},
     {"json", nullptr, "One JSON document"},
     {"prometheus", nullptr, "The text format of Prometheus"},
     {"check", nullptr, "One line first, and a status: 0 well, 1 worn, 2 failing, 3 unknown"},
     {"output", "FILE", "Write the form into this file, whole or not at all"}},
    "A report; - is standard input, which is the default",
    false};

// Monitoring takes this status for "unknown".
constexpr int kUsageStatus = static_cast<int>(report::Verdict::kUnknown);

struct Options {
  bool isJson = false;
  bool isPrometheus = false;
  bool checks = false;
  std::string output;  // empty: standard output
  std::string file = "-";
};

// Standard output takes no more.
struct OutputLost {
  int error;
};

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

File Open(const std::string& name) {
  base::Descriptor input = base::OpenInput(name);
  File file(fdopen(input.number(), "r"));
  if (!file) throw std::system_error(errno, std::generic_category(), name);
  input.Release();
  return file;
}

bool HasColors(const Options& options) {
  const char* noColor = std::getenv("NO_COLOR");
  if (noColor != nullptr && *noColor != '\0') return false;
  return options.output.empty() && isatty(STDOUT_FILENO) != 0;
}

std::unique_ptr<report::Form> MakeForm(const Options& options, std::string& text) {
  if (options.isJson) return report::MakeJson(text);
  if (options.isPrometheus) return report::MakePrometheus(text);
  return report::MakeTable(text, HasColors(options));
}

// One run: a report on its way to the form and to the check.
class Reading : public report::Listener {
 public:
  explicit Reading(const Options& options) : options_(options), form_(MakeForm(options, text_)) {}

  // Returns the status of the program.
  int Run() {
    try {
      if (Read()) {
        Deliver();
      } else {
        text_.clear();
      }
      if (options_.checks) PrintSummary();
      Print();
      if (base::FinishOutput(kCommandLine.program) != 0) hasFailed_ = true;
    } catch (const OutputLost& lost) {
      base::PrintError(kCommandLine.program,
                       std::string("standard output: ") + std::strerror(lost.error));
      hasFailed_ = true;
    }
    return Status();
  }

  void OnDrive(const report::Drive& drive) override {
    check_.OnDrive(drive);
    form_->OnDrive(drive);
    // A check's summary comes before the form, and a file is written whole.
    if (!options_.checks && options_.output.empty()) Print();
  }

  void OnFailed(const std::string& device) override {
    check_.OnFailed(device);
    form_->OnFailed(device);
  }

 private:
  // False when there is nothing that could be delivered.
  bool Read() {
    try {
      const File file = Open(options_.file);
      report::ReadReport(file.get(), *this);
    } catch (const report::DamagedReport& error) {
      Tell(options_.file + ": " + error.what());  // what came before is still good
    } catch (const std::bad_alloc&) {
      Tell(options_.file + ": out of memory");
      return false;
    } catch (const std::system_error& error) {
      Tell(options_.file + ": " + error.code().message());
      return false;
    }
    return true;
  }

  // Leaves in `text_` what is for standard output.
  void Deliver() {
    form_->Finish();
    if (options_.output.empty()) return;
    try {
      tools::OutputFile(options_.output).Finish(text_);
    } catch (const std::exception& error) {
      Tell(error.what());
    }
    text_.clear();
  }

  // A check tells it in its one line, and everything else on standard error.
  void Tell(const std::string& what) {
    hasFailed_ = true;
    const std::string problem = base::OneLine(what);
    check_.AddProblem(problem);
    if (!options_.checks) base::PrintError(kCommandLine.program, problem);
  }

  // A JSON document or metrics on standard output must not have this line among them.
  void PrintSummary() const {
    const bool isApart = options_.output.empty() && (options_.isJson || options_.isPrometheus);
    std::fprintf(isApart ? stderr : stdout, "%s\n", check_.Summary().c_str());
  }

  void Print() {
    if (std::fwrite(text_.data(), 1, text_.size(), stdout) != text_.size()) throw OutputLost{errno};
    text_.clear();
  }

  int Status() const {
    if (!options_.checks) return hasFailed_ ? base::kFailureStatus : 0;
    const report::Verdict worst = check_.Worst();
    const bool isUnknown = hasFailed_ && worst != report::Verdict::kCritical;
    return static_cast<int>(isUnknown ? report::Verdict::kUnknown : worst);
  }

  const Options& options_;
  std::string text_;  // of the form, not delivered yet
  std::unique_ptr<report::Form> form_;
  report::Check check_;
  bool hasFailed_ = false;
};

Options OptionsOf(const tools::Arguments& arguments) {
  Options options;
  options.isJson = arguments.Has("json");
  options.isPrometheus = arguments.Has("prometheus");
  options.checks = arguments.Has("check");
  if (arguments.Has("output")) options.output = arguments.options.at("output");
  if (arguments.file) options.file = *arguments.file;
  const int forms = arguments.Has("table") + options.isJson + options.isPrometheus;
  if (forms > 1) throw tools::UsageError("more than one form");
  return options;
}

int ReadReport(const tools::Arguments& arguments) {
  const Options options = OptionsOf(arguments);
  return Reading(options).Run();
}

}  // namespace

int main(int argc, char** argv) {
  return tools::RunProgram(kCommandLine, argc, argv, ReadReport, kUsageStatus);
}
