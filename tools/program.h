// The frame that every program runs in: its command line, --help and --version, and what
// becomes of its errors. What its options mean is the program's own affair.
#pragma once

#include <functional>
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
  const char* purpose;          // a sentence
  std::vector<Option> options;  // in the order of the help, which adds --help and --version
  const char* fileHelp;
  bool needsFile;                 // false: it may be left out, and `run` is called without
  const char* fileName = "FILE";  // what messages call it
};

struct Arguments {
  // Those that were given, with their values. A value is never empty, but for an option that
  // takes none. If an option is given twice, the last value counts.
  std::map<std::string, std::string> options;
  std::optional<std::string> file;  // not empty when `run` is called

  bool Has(const std::string& option) const { return options.contains(option); }
};

// A mistake in the arguments, in words for the user.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

using Run = std::function<int(const Arguments&)>;

// What a program ends with, and where it says so, when it could not do its work.
struct Failures {
  int status = 1;
  int usageStatus = 2;    // after a mistake in the arguments
  bool onOutput = false;  // mistakes are printed on standard output, where monitoring looks
};

// The version of all programs, three numbers with dots.
const char* Version();

// The whole of a program's main: prepares the standard streams, parses the arguments as getopt_long
// does, answers --help, -h and --version, or returns what `run` returns. Options may stand before
// and after the file, and may be abbreviated; "--" ends them. A mistake in the arguments, which
// `run` may throw as UsageError too, is printed as one line, as is any other exception, on standard
// error. Then the status is one of `failures`.
int RunProgram(const CommandLine& line, int argc, char** argv, const Run& run,
               Failures failures = {});

}  // namespace tools
