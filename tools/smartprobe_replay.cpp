// smartprobe-replay: the probe's report on a recorded machine.
#include "base/standard_streams.h"
#include "machines/recorded/recording_files.h"
#include "tools/program.h"
#include "tools/replay.h"

namespace {

const tools::CommandLine kCommandLine = {"smartprobe-replay",
                                         "Prints the report of the drives of a recorded machine.",
                                         {},
                                         "An XML property list; - is standard input",
                                         true};

int Replay(const tools::Arguments& arguments) {
  tools::Replay(machines::ReadRecordingFile(*arguments.file));
  base::FinishOutput();
  return 0;
}

}  // namespace

int main(int argc, char** argv) { return tools::RunProgram(kCommandLine, argc, argv, Replay); }
