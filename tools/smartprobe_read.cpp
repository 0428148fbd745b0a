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

#include "base/dates.h"
#include "base/files.h"
#include "base/numbers.h"
#include "base/standard_streams.h"
#include "drives/ages.h"
#include "machines/linux/capabilities.h"
#include "tools/host_input.h"
#include "tools/output_file.h"
#include "tools/program.h"
#include "views/field_texts.h"
#include "views/views.h"

namespace {

using drives::Host;

const tools::CommandLine kCommandLine = {
    "smartprobe-read",
    "Shows what a report, a recording or this host says about the drives, or hands it to "
    "monitoring.",
    {{"host", nullptr, "Read the drives of this host, in place of FILE (run as root)"},
     {"table", nullptr, "Each drive with all its attributes (the default)"},
     {"brief", nullptr, "Each drive in a line, and what is wrong with it"},
     {"html", nullptr, "A page for a browser, with what is wrong first"},
     {"json", nullptr, "One JSON document, for programs"},
     {"prometheus", nullptr, "Metrics for Prometheus"},
     {"advice", nullptr, "What to do about what is wrong, a sentence a line"},
     {"no-gone", nullptr, "Leave out drives that are gone"},
     {"since", "OLD", "What has changed since the report or recording OLD, a line a change"},
     {"check", nullptr,
      "Say first if all is well; status 0 well, 1 to look after (lost sectors, worn, hot, "
      "gone, no attributes), 2 failing, 3 unknown"},
     {"max-age", "DAYS",
      "With --check, answers older than that are unknown; 1 to 3650, 2 without this option"},
     {"output", "FILE",
      "Print into FILE, which only a whole report replaces; - is standard output"}},
    "The report, or a recording; - is standard input, which is the default",
    false};

// Monitoring takes this status for "unknown".
constexpr int kUnknownStatus = static_cast<int>(health::Verdict::kUnknown);

struct Form {
  const char* option;
  std::string (*textOf)(const Host&, const views::Screen&);
  bool isForTerminals;
};

std::string PageOf(const Host& host, const views::Screen& /*screen*/) {
  return views::PageText(host, base::Now());
}

std::string JsonOf(const Host& host, const views::Screen& /*screen*/) {
  return views::JsonText(host, tools::Version());
}

constexpr std::array kForms = {
    Form{"table", views::TableText, true},
    Form{"brief", views::BriefText, true},
    Form{"html", PageOf, false},
    Form{"json", JsonOf, false},
    Form{"prometheus", [](const Host& host, auto&) { return views::MetricsText(host); }, false},
    Form{"advice", [](const Host& host, auto&) { return views::AdviceText(host); }, true}};

// Made from two hosts, and so by Read alone.
constexpr Form kChanges = {"since", nullptr, true};

struct Options {
  const Form* form = kForms.data();
  std::string since = {};  // the file to compare with; empty: none
  bool checks = false;
  bool readsThisHost = false;
  bool hidesGone = false;
  std::chrono::days maxAge = drives::kFresh;  // of the newest answers, in a check
  std::string output = "-";
  std::string file = "-";
};

// What came of a run.
struct Reading {
  Host host = {};
  std::string text = {};                 // for standard output
  std::vector<std::string> faults = {};  // the report's damage among them
};

bool IsPrinted(const Options& options) { return base::IsStandardStream(options.output); }

std::string_view Environment(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

// That on which the form is printed, or else one of the usual width without colours.
views::Screen ScreenOf(const Options& options) {
  views::Screen screen;
  if (!IsPrinted(options) || isatty(STDOUT_FILENO) == 0) return screen;
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) screen.columns = size.ws_col;
  screen.hasColors = Environment("NO_COLOR").empty() && Environment("TERM") != "dumb";
  return screen;
}

// Without this line a forgotten FILE argument looks like a hang.
void WarnOfWaiting(const Options& options) {
  if (options.readsThisHost || !base::IsStandardStream(options.file)) return;
  if (isatty(STDIN_FILENO) == 0) return;
  base::PrintError(kCommandLine.program, "waiting for a report on standard input");
}

// Of a file that is no report at all there is nothing to show: an empty form would look like a host
// without drives.
bool HasNothing(const Host& host) {
  return host.damage && host.drives.empty() && host.notRead.empty();
}

// Answers that stay the same for ever must not look well to monitoring.
void AddAgeFault(Reading& reading, const Options& options) {
  if (!options.checks) return;
  const std::string fault = views::AgeFault(reading.host, options.maxAge);
  if (!fault.empty()) reading.faults.push_back(fault);
}

// With a damaged report, what it lacks would look like a change.
Host ReadWhole(const std::string& file) {
  Host host = tools::ReadHostFile(file);
  if (host.damage) throw std::runtime_error(file + ": " + views::DamageText(*host.damage));
  return host;
}

void Read(const Options& options, Reading& reading) {
  WarnOfWaiting(options);
  if (options.readsThisHost) {
    tools::CheckOutputFile(options.output);  // before any drive is asked
  } else {
    machines::KeepCapabilities(machines::kCapabilitiesOfFiles);  // a file takes no others
  }
  reading.host = options.readsThisHost ? tools::ReadThisHost() : tools::ReadHostFile(options.file);
  if (options.hidesGone) reading.host.gone.clear();
  if (const auto& damage = reading.host.damage) {
    reading.faults.push_back(options.file + ": " + views::DamageText(*damage));
  }
  if (HasNothing(reading.host)) return;
  AddAgeFault(reading, options);
  std::string text = options.since.empty()
                         ? options.form->textOf(reading.host, ScreenOf(options))
                         : views::ChangesText(ReadWhole(options.since), reading.host);
  if (IsPrinted(options)) {
    reading.text = std::move(text);
  } else if (!reading.host.damage) {
    tools::WriteOutputFile(options.output, text);
  }
}

Reading TryToRead(const Options& options) {
  Reading reading;
  try {
    Read(options, reading);
  } catch (const std::bad_alloc&) {
    reading.faults.emplace_back("out of memory");
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
  return reading.faults.empty() ? 0 : tools::Failures().status;
}

// A page, a JSON document or metrics on standard output must not have the summary among them.
int ShowChecked(const Reading& reading, const Options& options) {
  const auto [verdict, summary] = views::Check(reading.host, reading.faults);
  const bool isApart = IsPrinted(options) && !options.form->isForTerminals;
  std::fprintf(isApart ? stderr : stdout, "%s\n", summary.c_str());
  std::string text = reading.text;
  if (!isApart) std::ranges::replace(text, '|', '/');  // plug-ins have figures after a bar
  try {
    base::Print(text);
  } catch (const std::runtime_error& error) {
    base::PrintError(kCommandLine.program, error.what());
    if (verdict != health::Verdict::kCritical) return kUnknownStatus;
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
  if (arguments.Has("since")) {
    options.form = &kChanges;
    options.since = arguments.options.at("since");
    ++forms;
  }
  if (forms > 1) throw tools::UsageError("more than one form");
  options.checks = arguments.Has("check");
  if (arguments.Has("output")) options.output = arguments.options.at("output");
  if (arguments.Has("max-age")) {
    const auto days = base::ParseNumber<int>(arguments.options.at("max-age"), 10);
    if (!options.checks) throw tools::UsageError("--max-age goes with --check");
    if (!days || *days < 1 || *days > 3650) {
      throw tools::UsageError("--max-age needs a number of days from 1 to 3650");
    }
    options.maxAge = std::chrono::days(*days);
  }
  options.hidesGone = arguments.Has("no-gone");
  options.readsThisHost = arguments.Has("host");
  if (options.readsThisHost && arguments.file) throw tools::UsageError("--host reads no FILE");
  if (arguments.file) options.file = *arguments.file;
  const bool readsTwice =
      base::IsStandardStream(options.since) && base::IsStandardStream(options.file);
  if (readsTwice && !options.readsThisHost) {
    throw tools::UsageError("--since and FILE are both standard input");
  }
  return options;
}

int ReadReport(const tools::Arguments& arguments) {
  const Options options = OptionsOf(arguments);
  const Reading reading = TryToRead(options);
  return options.checks ? ShowChecked(reading, options) : Show(reading);
}

// Whether an argument is --check or an abbreviation of it. Allocates nothing: memory may run out
// before the arguments are parsed. A file of that name makes a check too, which at worst changes
// the status of a failure.
bool IsCheck(int argc, char** argv) {
  return std::any_of(argv, argv + argc, [](std::string_view argument) {
    return argument.size() > 2 && std::string_view("--check").starts_with(argument);
  });
}

}  // namespace

int main(int argc, char** argv) {
  tools::Failures failures{.usageStatus = kUnknownStatus};
  // Monitoring would take any other status for a verdict, and reads standard output.
  if (IsCheck(argc, argv)) failures = {kUnknownStatus, kUnknownStatus, true};
  return tools::RunProgram(kCommandLine, argc, argv, ReadReport, failures);
}
