#include "base/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>

#include "base/printable_text.h"

namespace base {
namespace {

// A file that is opened gets the lowest free descriptor, so that one opened later could
// become standard output. O_PATH occupies the descriptor of a closed stream, which still
// can be neither read nor written.
void FillClosedDescriptors() {
  int descriptor = -1;
  do {
    descriptor = open("/", O_PATH);
  } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
  if (descriptor >= 0) close(descriptor);
}

}  // namespace

void PrepareStandardStreams() {
  std::signal(SIGXFSZ, SIG_IGN);
  FillClosedDescriptors();
}

void PrintError(std::string_view program, std::string_view what) {
  const std::string line = OneLine(std::string(program) + ": " + std::string(what));
  std::fprintf(stderr, "%s\n", line.c_str());
}

int FinishOutput(std::string_view program) {
  const bool failedBefore = std::ferror(stdout) != 0;
  const bool failsNow = std::fflush(stdout) != 0;
  if (!failedBefore && !failsNow) return 0;
  PrintError(program, std::string("standard output: ") +
                          (failsNow ? std::strerror(errno) : "some of it could not be written"));
  return kFailureStatus;
}

}  // namespace base
