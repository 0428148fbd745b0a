#include "tools/replayed_report.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <utility>

#include "probe/pass/start_up.h"

// Never destroyed: the process is about to end, and a large machine takes its time.
platform::Machine& platform::ThisMachine() {
  static auto& machine = *new Machine;
  return machine;
}

namespace tools {

void Install(platform::Machine machine) { platform::ThisMachine() = std::move(machine); }

// The probe knows one output, standard output, which the C library lets stand for another stream.
std::string ReplayedReport() {
  char* text = nullptr;
  std::size_t size = 0;
  std::FILE* const report = open_memstream(&text, &size);
  if (report == nullptr) throw std::bad_alloc();
  std::FILE* const output = std::exchange(stdout, report);
  RunProbe();
  stdout = output;
  const bool isLost = std::ferror(report) != 0;
  const bool isClosed = std::fclose(report) == 0;
  const std::unique_ptr<char, decltype(&std::free)> owner(text, std::free);
  if (isLost || !isClosed) throw std::bad_alloc();
  return {text, size};
}

}  // namespace tools
