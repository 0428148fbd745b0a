#include "tools/program.h"

#include <getopt.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <exception>
#include <new>
#include <utility>

#include "base/standard_streams.h"

namespace tools {
namespace {

std::vector<Option> AllOptions(const CommandLine& line) {
  std::vector<Option> options = line.options;
  options.push_back({"help", nullptr, "Print this help and exit, as -h does"});
  options.push_back({"version", nullptr, "Print the version and exit"});
  return options;
}

std::string Dashed(const Option& option) { return std::string("--") + option.name; }

// For getopt_long, which answers with the place of an option in `options`, from 1 on.
std::vector<option> LongOptions(const std::vector<Option>& options) {
  std::vector<option> rows;
  for (const Option& each : options) {
    const int place = static_cast<int>(rows.size()) + 1;
    rows.push_back({each.name, each.value ? required_argument : no_argument, nullptr, place});
  }
  rows.push_back({});
  return rows;
}

const Option& OptionAt(int place, const std::vector<Option>& options) {
  return options.at(static_cast<std::size_t>(place - 1));
}

// What is wrong with the argument that getopt_long has just refused with `answer`. It left the
// option in optopt, if it knows it.
std::string Refusal(int answer, const std::vector<Option>& options, char** argv) {
  const bool isKnown = optopt > 0 && optopt <= static_cast<int>(options.size());
  if (isKnown) {
    const char* fault = answer == ':' ? " needs a value" : " takes no value";
    return Dashed(OptionAt(optopt, options)) + fault;
  }
  if (optopt != 0) return std::string("unknown option -") + static_cast<char>(optopt);
  const std::string argument = argv[optind - 1];
  return "unknown or ambiguous option " + argument.substr(0, argument.find('='));
}

void AddOption(Arguments& arguments, const Option& given) {
  const std::string value = given.value ? optarg : "";
  if (given.value && value.empty()) throw UsageError(Dashed(given) + " has an empty value");
  arguments.options[given.name] = value;
}

Arguments ParseArguments(const CommandLine& line, int argc, char** argv) {
  const std::vector<Option> options = AllOptions(line);
  const std::vector<option> longOptions = LongOptions(options);
  Arguments arguments;
  optind = 0;  // a test may parse several command lines
  opterr = 0;
  int answer = 0;
  while ((answer = getopt_long(argc, argv, ":h", longOptions.data(), nullptr)) != -1) {
    if (answer == '?' || answer == ':') throw UsageError(Refusal(answer, options, argv));
    if (answer == 'h') {
      arguments.options["help"] = "";
    } else {
      AddOption(arguments, OptionAt(answer, options));
    }
  }
  if (optind < argc) arguments.file = argv[optind++];
  if (optind < argc) {
    throw UsageError(std::string("one ") + line.fileName + " too many, " + argv[optind]);
  }
  return arguments;
}

// "--output FILE"
std::string Form(const Option& option) {
  return option.value == nullptr ? Dashed(option) : Dashed(option) + " " + option.value;
}

std::string HelpText(const CommandLine& line) {
  std::vector<std::pair<std::string, std::string>> rows = {{line.fileName, line.fileHelp}};
  for (const Option& option : AllOptions(line)) rows.emplace_back(Form(option), option.help);
  std::size_t width = 0;
  for (const auto& [form, help] : rows) width = std::max(width, form.size());

  const std::string file = line.fileName;
  std::string text = std::string("Usage: ") + line.program + " [OPTION...] " +
                     (line.needsFile ? file : "[" + file + "]") + "\n" + line.purpose + "\n\n";
  for (const auto& [form, help] : rows) {
    text.append("  ").append(form).append(width - form.size() + 2, ' ').append(help).append("\n");
  }
  return text;
}

int RunOrAnswer(const CommandLine& line, const Arguments& arguments, const Run& run) {
  const bool wantsVersion = arguments.Has("version");
  if (arguments.Has("help") || wantsVersion) {
    const std::string version = std::string(line.program) + " " + Version() + "\n";
    base::Print(wantsVersion ? version : HelpText(line));
    return 0;
  }
  if (line.needsFile && !arguments.file) {
    throw UsageError(std::string("there is no ") + line.fileName);
  }
  if (arguments.file && arguments.file->empty()) {
    throw UsageError(std::string("the name of ") + line.fileName + " is empty");
  }
  return run(arguments);
}

// Throws std::bad_alloc alone, which may also happen while a failure is printed.
int RunAndReport(const CommandLine& line, int argc, char** argv, const Run& run,
                 Failures failures) {
  try {
    return RunOrAnswer(line, ParseArguments(line, argc, argv), run);
  } catch (const UsageError& error) {
    base::PrintError(line.program, std::string(error.what()) + "; see --help",
                     failures.onOutput ? stdout : stderr);
    return failures.usageStatus;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    base::PrintError(line.program, error.what());
    return failures.status;
  }
}

}  // namespace

const char* Version() { return SMARTPROBE_VERSION; }

int RunProgram(const CommandLine& line, int argc, char** argv, const Run& run, Failures failures) {
  base::PrepareStandardStreams();
  try {
    return RunAndReport(line, argc, argv, run, failures);
  } catch (const std::bad_alloc&) {
    std::fprintf(stderr, "%s: out of memory\n", line.program);
    return failures.status;
  }
}

}  // namespace tools
