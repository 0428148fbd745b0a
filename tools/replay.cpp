#include "tools/replay.h"

#include <cstdio>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "platform/ledger.h"
#include "probe/pass/start_up.h"
#include "probe/state/process_state.h"

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

// The probe says nothing where it has no memory for its table, as on a machine without drives.
void RunOrThrow() {
  const bool hasLooked = RunProbe() != 0;
  if (!hasLooked && gMySysVersion >= kOldestSystem) throw std::bad_alloc();
}

}  // namespace

void Replay(platform::Machine machine) {
  platform::SetMachine(std::move(machine));
  RunOrThrow();
}

std::string ReplayDevice(const platform::Entry& device) {
  if (platform::ThisMachine().systemVersion < kOldestSystem) {
    throw std::runtime_error("the probe looks for no drives on a system before 10.2");
  }
  platform::EndProcess();
  platform::SetOnlyDevice(&device);
  OutputInMemory output;
  RunOrThrow();
  return std::string(output.Text());
}

}  // namespace tools
