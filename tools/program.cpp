#include "tools/program.h"

#include <getopt.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <utility>

#include "base/standard_streams.h"

namespace tools {
namespace {

// What getopt returns for the first option; no character is so large.
constexpr int kFirstOption = 256;

std::vector<Option> AllOptions(const CommandLine& line) {
  std::vector<Option> options = line.options;
  options.push_back({"help", nullptr, "Print this help and exit"});
  options.push_back({"version", nullptr, "Print the version and exit"});
  return options;
}

std::vector<option> GetoptOptions(const std::vector<Option>& options) {
  std::vector<option> known;
  known.reserve(options.size() + 1);
  for (const Option& each : options) {
    const int hasValue = each.value == nullptr ? no_argument : required_argument;
    known.push_back({each.name, hasValue, nullptr, kFirstOption + static_cast<int>(known.size())});
  }
  known.push_back({});
  return known;
}

const Option& OptionOf(int code, const std::vector<Option>& options) {
  return options[static_cast<std::size_t>(code - kFirstOption)];
}

std::string Dashed(const Option& option) { return std::string("--") + option.name; }

// What is wrong, in words; `found` is what getopt returned.
std::string Mistake(int found, const char* argument, const std::vector<Option>& options) {
  if (optopt >= kFirstOption) {
    return Dashed(OptionOf(optopt, options)) +
           (found == ':' ? " needs a value" : " takes no value");
  }
  const std::string unknown = "unknown option ";
  return optopt != 0 ? unknown + '-' + static_cast<char>(optopt) : unknown + argument;
}

Arguments ParseArguments(const CommandLine& line, int argc, char** argv) {
  const std::vector<Option> options = AllOptions(line);
  const std::vector<option> known = GetoptOptions(options);
  Arguments arguments;
  unsetenv("POSIXLY_CORRECT");  // with it, options after the file would be files
  opterr = 0;
  for (;;) {
    const int found = getopt_long(argc, argv, ":", known.data(), nullptr);
    if (found == -1) break;
    if (found < kFirstOption) throw UsageError(Mistake(found, argv[optind - 1], options));
    const Option& option = OptionOf(found, options);
    const std::string value = option.value == nullptr ? "" : optarg;
    if (option.value != nullptr && value.empty()) {
      throw UsageError(Dashed(option) + " has an empty value");
    }
    arguments.options[option.name] = value;
  }
  if (optind < argc) arguments.file = argv[optind++];
  if (optind < argc) throw UsageError(std::string("one FILE too many, ") + argv[optind]);
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
  if (arguments.Has("help")) {
    base::Print(HelpText(line));
    return 0;
  }
  if (arguments.Has("version")) {
    base::Print(std::string(line.program) + " " SMARTPROBE_VERSION "\n");
    return 0;
  }
  if (line.needsFile && !arguments.file) throw UsageError("there is no FILE");
  if (arguments.file && arguments.file->empty()) throw UsageError("the name of FILE is empty");
  return run(arguments);
}

}  // namespace

int RunProgram(const CommandLine& line, int argc, char** argv, int (*run)(const Arguments&),
               int usageStatus) {
  base::PrepareStandardStreams();
  try {
    return RunOrAnswer(line, ParseArguments(line, argc, argv), run);
  } catch (const UsageError& error) {
    base::PrintError(line.program, error.what());
    std::fputs(HelpText(line).c_str(), stderr);
    return usageStatus;
  } catch (const std::bad_alloc&) {
    std::fprintf(stderr, "%s: out of memory\n", line.program);
  } catch (const std::exception& error) {
    base::PrintError(line.program, error.what());
  }
  return kFailureStatus;
}

}  // namespace tools
