// The messages of a program, and whether its output arrived.
#include "tools/standard_streams.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "machines/recorded/one_line.h"

namespace tools {

void PrintError(std::string_view program, std::string_view what) {
  const std::string line = machines::OneLine(std::string(program) + ": " + std::string(what));
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

}  // namespace tools
