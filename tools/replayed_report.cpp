#include "tools/replayed_report.h"

#include <cstdio>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "probe/pass/start_up.h"
#include "probe/state/process_state.h"

// Never destroyed: the process is about to end, and a large machine takes its time.
platform::Machine& platform::ThisMachine() {
  static auto& machine = *new Machine;
  return machine;
}

namespace tools {
namespace {

// Standard output in memory. The probe knows no other output, and the C library lets it stand for
// another stream.
class OutputInMemory {
 public:
  OutputInMemory() : stream_(open_memstream(&text_, &size_)), output_(stdout) {
    if (stream_ == nullptr) throw std::bad_alloc();
    stdout = stream_;
  }
  OutputInMemory(const OutputInMemory&) = delete;
  OutputInMemory& operator=(const OutputInMemory&) = delete;
  ~OutputInMemory() {
    stdout = output_;
    std::fclose(stream_);
    std::free(text_);
  }

  std::string_view Text() {
    if (std::fflush(stream_) != 0 || std::ferror(stream_) != 0) throw std::bad_alloc();
    return {text_, size_};
  }

 private:
  char* text_ = nullptr;
  std::size_t size_ = 0;
  std::FILE* stream_;
  std::FILE* output_;
};

constexpr SInt32 kOldestSystem = 0x1020;

}  // namespace

// The probe says nothing where it has no memory for its table, as on a machine without drives.
void Replay(platform::Machine machine) {
  platform::ThisMachine() = std::move(machine);
  const bool hasLooked = RunProbe() != 0;
  if (!hasLooked && gMySysVersion >= kOldestSystem) throw std::bad_alloc();
}

ReplayedReport ReplayInMemory(platform::Machine machine) {
  OutputInMemory output;
  std::vector<Visit> visits;
  machine.onVisit = [&](const platform::Entry& device) {
    visits.push_back({&device, output.Text().size()});
  };
  Replay(std::move(machine));
  platform::ThisMachine().onVisit = nullptr;
  if (gMySysVersion < kOldestSystem) {
    throw std::runtime_error("the probe looks for no drives on a system before 10.2");
  }
  return {std::string(output.Text()), std::move(visits)};
}

}  // namespace tools
