// smartprobe-read: a report for people and for monitoring.
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/files.h"
#include "base/standard_streams.h"
#include "machines/recorded/read_recording.h"
#include "machines/recorded/recording_files.h"
#include "report/forms.h"
#include "report/health.h"
#include "report/report_reader.h"
#include "tools/output_file.h"
#include "tools/program.h"
#include "tools/recorded_report.h"

namespace {

using report::Report;

const tools::CommandLine kCommandLine = {
    "smartprobe-read",
    "Shows what a report of smartprobe, or that of a recorded machine, says about the drives, or\n"
    "hands it to monitoring.",
    {{"table", nullptr, "Each drive with all its attributes (the default)"},
     {"brief", nullptr, "Each drive in a line, and what is wrong with it"},
     {"html", nullptr, "A page for a browser, with what is wrong first"},
     {"json", nullptr, "One JSON document, for programs"},
     {"prometheus", nullptr, "Metrics for Prometheus"},
     {"check", nullptr,
      "Say first if all is well; status 0 well, 1 to look after (lost sectors, worn, hot, no "
      "attributes), 2 failing, 3 unknown"},
     {"output", "FILE",
      "Print into FILE, which only a whole report replaces; - is standard output"}},
    "The report, or a recording; - is standard input, which is the default",
    false};

// Monitoring takes this status for "unknown".
constexpr int kUnknownStatus = static_cast<int>(report::Verdict::kUnknown);

struct Form {
  const char* option;
  std::string (*textOf)(const Report&, const report::Screen&);
  bool isForTerminals;
};

std::string PageOf(const Report& report, const report::Screen& /*screen*/) {
  using std::chrono::system_clock;
  return report::HTMLText(report, std::chrono::floor<std::chrono::seconds>(system_clock::now()));
}

constexpr std::array kForms = {
    Form{"table", report::TableText, true}, Form{"brief", report::BriefText, true},
    Form{"html", PageOf, false},
    Form{"json", [](const Report& report, auto&) { return report::JsonText(report); }, false},
    Form{"prometheus", [](const Report& report, auto&) { return report::PrometheusText(report); },
         false}};

struct Options {
  const Form* form = kForms.data();
  bool checks = false;
  std::string output = "-";
  std::string file = "-";
};

// What came of a run.
struct Reading {
  Report report;
  std::string text;                 // for standard output
  std::vector<std::string> faults;  // the report's damage among them
};

bool IsPrinted(const Options& options) { return base::IsStandardStream(options.output); }

std::string_view Environment(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

// That on which the form is printed, or else one of the usual width without colours.
report::Screen ScreenOf(const Options& options) {
  report::Screen screen;
  if (!IsPrinted(options) || isatty(STDOUT_FILENO) == 0) return screen;
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) screen.columns = size.ws_col;
  screen.hasColors = Environment("NO_COLOR").empty() && Environment("TERM") != "dumb";
  return screen;
}

// Whoever forgot the file would else wonder what takes so long.
void TellOfWaiting(const Options& options) {
  if (!base::IsStandardStream(options.file) || isatty(STDIN_FILENO) == 0) return;
  base::PrintError(kCommandLine.program, "waiting for a report on standard input");
}

// A report begins with a letter. What begins as no report may, but as XML or a binary property list
// do, is read as a recording, whose reader says best what is wrong with it.
bool IsRecording(std::string_view bytes) {
  constexpr std::string_view kBeforeMarkup = "\xEF\xBB\xBF\xFE\xFF \t\r\n";
  const std::string_view markup =
      bytes.substr(std::min(bytes.find_first_not_of(kBeforeMarkup), bytes.size()));
  return markup.starts_with('<') || markup.starts_with(std::string_view("\0<", 2)) ||
         bytes.starts_with("bplist");
}

// The report in the file, or that of the recording in it.
Report ReportIn(const std::string& file) {
  const std::string bytes = base::ReadUpTo(machines::kMaxRecordingSize + 1, file);
  if (!IsRecording(bytes)) return report::ParseReport(bytes);
  return tools::RecordedReport(machines::ParseRecording(bytes, file));
}

void Read(const Options& options, Reading& reading) {
  TellOfWaiting(options);
  reading.report = ReportIn(options.file);
  if (const auto& damage = reading.report.damage) {
    reading.faults.push_back(options.file + ": " + report::DamageText(*damage));
  }
  std::string text = options.form->textOf(reading.report, ScreenOf(options));
  if (IsPrinted(options)) {
    reading.text = std::move(text);
  } else if (!reading.report.damage) {
    tools::WriteOutputFile(options.output, text);
  }
}

Reading TryToRead(const Options& options) {
  Reading reading;
  try {
    Read(options, reading);
  } catch (const std::bad_alloc&) {
    reading.faults.push_back(options.file + ": out of memory");
  } catch (const std::exception& error) {
    reading.faults.emplace_back(error.what());
  }
  return reading;
}

int Show(const Reading& reading) {
  for (const std::string& fault : reading.faults) {
    base::PrintError(kCommandLine.program, fault);
  }
  base::Print(reading.text);
  return reading.faults.empty() ? 0 : tools::Statuses().failure;
}

// A page, a JSON document or metrics on standard output must not have the summary among them.
int ShowChecked(const Reading& reading, const Options& options) {
  const auto [verdict, summary] = report::Check(reading.report, reading.faults);
  const bool isApart = IsPrinted(options) && !options.form->isForTerminals;
  std::fprintf(isApart ? stderr : stdout, "%s\n", summary.c_str());
  try {
    base::Print(reading.text);
  } catch (const std::runtime_error& error) {
    base::PrintError(kCommandLine.program, error.what());
    if (verdict != report::Verdict::kCritical) return kUnknownStatus;
  }
  return static_cast<int>(verdict);
}

Options OptionsOf(const tools::Arguments& arguments) {
  Options options;
  int forms = 0;
  for (const Form& form : kForms) {
    if (!arguments.Has(form.option)) continue;
    options.form = &form;
    ++forms;
  }
  if (forms > 1) throw tools::UsageError("more than one form");
  options.checks = arguments.Has("check");
  if (arguments.Has("output")) options.output = arguments.options.at("output");
  if (arguments.file) options.file = *arguments.file;
  return options;
}

int ReadReport(const tools::Arguments& arguments) {
  const Options options = OptionsOf(arguments);
  const Reading reading = TryToRead(options);
  return options.checks ? ShowChecked(reading, options) : Show(reading);
}

// Nothing is allocated for it: memory may run out before the arguments are parsed. A file of that
// name makes a check too, which at worst changes the status of a failure.
bool IsCheck(int argc, char** argv) {
  return std::any_of(argv, argv + argc,
                     [](std::string_view argument) { return argument == "--check"; });
}

}  // namespace

int main(int argc, char** argv) {
  tools::Statuses statuses{.usage = kUnknownStatus};
  if (IsCheck(argc, argv)) {
    // Monitoring would take any other for a verdict.
    statuses.failure = kUnknownStatus;
    // Destroying a JSON value takes memory too, and must not throw.
    std::set_terminate([] { std::_Exit(kUnknownStatus); });
  }
  return tools::RunProgram(kCommandLine, argc, argv, ReadReport, statuses);
}
