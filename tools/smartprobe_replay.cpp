// smartprobe-replay: the probe's report on a recorded machine.
#include <cstdio>
#include <exception>
#include <new>
#include <optional>
#include <string>

#include "machines/recorded/recorded_machine.h"
#include "machines/standard_streams.h"
#include "platform/machine.h"
#include "probe/start_up.h"
#include "tools/command_line.h"
#include "tools/input.h"
#include "tools/standard_streams.h"

// Never destroyed: the process is about to end, and a large machine takes its time.
platform::Machine& platform::ThisMachine() {
  static auto& machine = *new Machine;
  return machine;
}

namespace {

constexpr const char* kProgram = "smartprobe-replay";

int Fail(const std::string& file, const std::string& what) {
  tools::PrintError(kProgram, file + ": " + what);
  return tools::kFailureStatus;
}

// One byte more than a recording may have shows that it has too many.
platform::Machine ReadMachine(const std::string& file) {
  return machines::ReadRecordedMachine(tools::ReadUpTo(machines::kMaxRecordingSize + 1, file));
}

int Replay(const std::string& file) {
  try {
    platform::ThisMachine() = ReadMachine(file);
  } catch (const std::bad_alloc&) {
    return Fail(file, "out of memory");
  } catch (const std::exception& error) {
    return Fail(file, error.what());
  }
  RunProbe();
  return tools::FinishOutput(kProgram);
}

}  // namespace

int main(int argc, char** argv) try {
  machines::PrepareStandardStreams();
  CLI::App app("Prints the report of the drives of a recorded machine.", kProgram);
  std::string file;
  app.add_option("FILE", file, "An XML property list; - is standard input")->required();
  if (const std::optional<int> status = tools::ParseCommandLine(app, argc, argv)) return *status;
  return Replay(file);
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s: %s\n", kProgram, error.what());
  return tools::kFailureStatus;
}
