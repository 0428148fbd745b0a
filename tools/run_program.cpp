#include "tools/run_program.h"

#include <cstdio>
#include <exception>
#include <new>
#include <string>

#include "base/standard_streams.h"

namespace tools {
namespace {

int Print(const CommandLine& line, const std::string& text) {
  std::fputs(text.c_str(), stdout);
  return base::FinishOutput(line.program);
}

int RunOrAnswer(const CommandLine& line, const Arguments& arguments, int (*run)(const Arguments&)) {
  if (arguments.Has("help")) return Print(line, HelpText(line));
  if (arguments.Has("version")) {
    return Print(line, std::string(line.program) + " " SMARTPROBE_VERSION "\n");
  }
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
  return base::kFailureStatus;
}

}  // namespace tools
