#include "tools/program.h"

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

// getopt_long would take an abbreviation too, which a later option can make ambiguous.
const Option& OptionOf(const std::string& name, const std::vector<Option>& options) {
  for (const Option& option : options) {
    if (Dashed(option) == (name == "-h" ? "--help" : name)) return option;
  }
  throw UsageError("unknown option " + name);
}

// Adds the option at given[i], and moves i to its value if that is an argument of its own.
void AddOption(Arguments& arguments, const std::vector<Option>& options,
               const std::vector<std::string>& given, std::size_t& i) {
  const std::size_t equals = given[i].find('=');
  const bool hasValue = equals != std::string::npos;
  const std::string name = given[i].substr(0, equals);
  const Option& option = OptionOf(name, options);
  std::string value;
  if (option.value == nullptr) {
    if (hasValue) throw UsageError(Dashed(option) + " takes no value");
  } else {
    if (!hasValue && i + 1 == given.size()) throw UsageError(Dashed(option) + " needs a value");
    value = hasValue ? given[i].substr(equals + 1) : given[++i];
    if (value.empty()) throw UsageError(Dashed(option) + " has an empty value");
  }
  arguments.options[option.name] = value;
}

Arguments ParseArguments(const CommandLine& line, int argc, char** argv) {
  const std::vector<Option> options = AllOptions(line);
  const std::vector<std::string> given(argv, argv + argc);
  Arguments arguments;
  bool mayBeOption = true;
  for (std::size_t i = 1; i < given.size(); i++) {
    if (mayBeOption && given[i] == "--") {
      mayBeOption = false;
    } else if (mayBeOption && given[i].size() > 1 && given[i].front() == '-') {
      AddOption(arguments, options, given, i);
    } else if (arguments.file) {
      throw UsageError("one FILE too many, " + given[i]);
    } else {
      arguments.file = given[i];
    }
  }
  return arguments;
}

// "--output FILE"
std::string Form(const Option& option) {
  return option.value == nullptr ? Dashed(option) : Dashed(option) + " " + option.value;
}

std::string HelpText(const CommandLine& line) {
  std::vector<std::pair<std::string, std::string>> rows = {{"FILE", line.fileHelp}};
  for (const Option& option : AllOptions(line)) rows.emplace_back(Form(option), option.help);
  std::size_t width = 0;
  for (const auto& [form, help] : rows) width = std::max(width, form.size());

  std::string text = std::string("Usage: ") + line.program + " [OPTION...] " +
                     (line.needsFile ? "FILE" : "[FILE]") + "\n" + line.purpose + "\n\n";
  for (const auto& [form, help] : rows) {
    text.append("  ").append(form).append(width - form.size() + 2, ' ').append(help).append("\n");
  }
  return text;
}

int RunOrAnswer(const CommandLine& line, const Arguments& arguments, int (*run)(const Arguments&)) {
  const bool wantsVersion = arguments.Has("version");
  if (arguments.Has("help") || wantsVersion) {
    const std::string version = std::string(line.program) + " " SMARTPROBE_VERSION "\n";
    base::Print(wantsVersion ? version : HelpText(line));
    return 0;
  }
  if (line.needsFile && !arguments.file) throw UsageError("there is no FILE");
  if (arguments.file && arguments.file->empty()) throw UsageError("the name of FILE is empty");
  return run(arguments);
}

// Throws std::bad_alloc alone, which may also happen where a failure is told.
int RunAndTell(const CommandLine& line, int argc, char** argv, int (*run)(const Arguments&),
               Statuses statuses) {
  try {
    return RunOrAnswer(line, ParseArguments(line, argc, argv), run);
  } catch (const UsageError& error) {
    base::PrintError(line.program, error.what());
    std::fputs(HelpText(line).c_str(), stderr);
    return statuses.usage;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    base::PrintError(line.program, error.what());
    return statuses.failure;
  }
}

}  // namespace

int RunProgram(const CommandLine& line, int argc, char** argv, int (*run)(const Arguments&),
               Statuses statuses) {
  base::PrepareStandardStreams();
  try {
    return RunAndTell(line, argc, argv, run, statuses);
  } catch (const std::bad_alloc&) {
    std::fprintf(stderr, "%s: out of memory\n", line.program);
    return statuses.failure;
  }
}

}  // namespace tools
