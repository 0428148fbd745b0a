// smartprobe-replay: the probe's report on a recorded machine.
#include <stdexcept>
#include <string>

#include "base/files.h"
#include "base/standard_streams.h"
#include "machines/recorded/read_recording.h"
#include "machines/recorded/recording_format.h"
#include "platform/machine.h"
#include "probe/pass/start_up.h"
#include "tools/program.h"

// Never destroyed: the process is about to end, and a large machine takes its time.
platform::Machine& platform::ThisMachine() {
  static auto& machine = *new Machine;
  return machine;
}

namespace {

const tools::CommandLine kCommandLine = {"smartprobe-replay",
                                         "Prints the report of the drives of a recorded machine.",
                                         {},
                                         "An XML property list; - is standard input",
                                         true};

// One byte more than a recording may have shows that it has too many.
platform::Machine ReadMachine(const std::string& file) {
  const std::string bytes = base::ReadUpTo(machines::kMaxRecordingSize + 1, file);
  try {
    return machines::ReadRecording(bytes);
  } catch (const machines::RecordingError& error) {
    throw std::runtime_error(file + ": " + error.what());
  }
}

int Replay(const tools::Arguments& arguments) {
  platform::ThisMachine() = ReadMachine(*arguments.file);
  RunProbe();
  base::FinishOutput();
  return 0;
}

}  // namespace

int main(int argc, char** argv) { return tools::RunProgram(kCommandLine, argc, argv, Replay); }
