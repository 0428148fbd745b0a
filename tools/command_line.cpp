#include "tools/command_line.h"

#include <getopt.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace tools {
namespace {

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
    known.push_back(
        {each.name, each.value == nullptr ? no_argument : required_argument, nullptr, 0});
  }
  known.push_back({});
  return known;
}

void TakeOption(const Option& option, const char* value, Arguments& arguments) {
  if (option.value != nullptr && *value == '\0') {
    throw UsageError(std::string("--") + option.name + " needs a value");
  }
  arguments.options[option.name] = option.value == nullptr ? "" : value;
}

// "--output FILE"
std::string Form(const Option& option) {
  const std::string name = std::string("--") + option.name;
  return option.value == nullptr ? name : name + " " + option.value;
}

}  // namespace

Arguments ParseArguments(const CommandLine& line, int argc, char** argv) {
  const std::vector<Option> options = AllOptions(line);
  const std::vector<option> known = GetoptOptions(options);
  Arguments arguments;
  opterr = 0;
  for (;;) {
    int index = 0;
    const int found = getopt_long(argc, argv, ":", known.data(), &index);
    if (found == -1) break;
    if (found == '?' && optopt != 0) {  // of one dash, of which there are none
      throw UsageError(std::string("unknown option -") + static_cast<char>(optopt));
    }
    const std::string argument = argv[optind - 1];
    if (found == ':') throw UsageError(argument + " needs a value");
    if (found == '?') throw UsageError("unknown option " + argument);
    TakeOption(options[static_cast<std::size_t>(index)], optarg, arguments);
  }
  if (optind < argc) arguments.file = argv[optind++];
  if (optind < argc) throw UsageError(std::string("one FILE too many, ") + argv[optind]);
  const bool isAnswered = arguments.Has("help") || arguments.Has("version");
  if (line.needsFile && !arguments.file && !isAnswered) throw UsageError("there is no FILE");
  return arguments;
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

}  // namespace tools
