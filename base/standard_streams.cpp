#include "base/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <stdexcept>
#include <string>

#include "base/files.h"
#include "base/printable_text.h"

namespace base {
namespace {

constexpr const char* kOutput = "standard output";

// open() takes the lowest free descriptor. If standard output is closed, the next file to be opened
// could take its place and get the program's output. O_PATH fills the place with a descriptor that
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

void PrintError(std::string_view program, std::string_view what, std::FILE* stream) {
  const std::string line = OneLine(std::string(program) + ": " + std::string(what));
  std::fprintf(stream, "%s\n", line.c_str());
}

void FinishOutput() {
  const bool failedBefore = std::ferror(stdout) != 0;
  if (std::fflush(stdout) != 0) throw SystemError(kOutput);
  if (failedBefore) throw std::runtime_error(std::string(kOutput) + ": some of it is lost");
}

void Print(std::string_view text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size()) throw SystemError(kOutput);
  FinishOutput();
}

}  // namespace base
