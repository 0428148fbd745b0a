// The arguments of a program, and its help. What an option does is up to the program.
#pragma once

#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace tools {

struct Option {
  const char* name;   // without the dashes
  const char* value;  // what the help calls its value; null: it takes none
  const char* help;
};

struct CommandLine {
  const char* program;
  const char* purpose;  // a sentence
  std::vector<Option> options;
  const char* fileHelp;
  bool needsFile;
};

struct Arguments {
  std::map<std::string, std::string> options;  // those that were given, with their values
  std::optional<std::string> file;

  bool Has(const std::string& option) const { return options.contains(option); }
};

// A mistake in the arguments, in words for the user.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Options may come before and after the file; "--" ends them. --help and --version are
// options of every program. Throws UsageError, also for an option's empty value. To be
// called once in a process, since getopt_long keeps its place.
Arguments ParseArguments(const CommandLine& line, int argc, char** argv);

// The text that --help prints.
std::string HelpText(const CommandLine& line);

}  // namespace tools
