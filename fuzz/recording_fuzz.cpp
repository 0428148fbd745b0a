// Any bytes as a recording: one line of error, or a machine and a whole pass over it that
// leaves nothing open but what is left open by intent.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "machines/recorded/read_recording.h"
#include "machines/recorded/recording_format.h"
#include "platform/ledger.h"
#include "platform/machine.h"
#include "probe/pass/start_up.h"
#include "probe/state/process_state.h"

namespace {

bool IsExpected(platform::Ledger& left) {
  using Kind = platform::ReferenceKind;
  return left[Kind::kMatchingDictionary] == 0 && left[Kind::kFoundValue] == 0 &&
         left[Kind::kString] == 0 && left[Kind::kPlugIn] == left[Kind::kSMARTInterface] &&
         left[Kind::kMemoryBlock] <= 1 && left[Kind::kIterator] <= 2;
}

}  // namespace

platform::Machine& platform::ThisMachine() {
  static Machine machine;
  return machine;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  [[maybe_unused]] static FILE* const nowhere = std::freopen("/dev/null", "w", stdout);
  const std::string_view file(reinterpret_cast<const char*>(data), size);
  try {
    platform::ThisMachine() = machines::ReadRecording(file);
  } catch (const machines::RecordingError& error) {
    const std::string_view message = error.what();
    if (message.empty() || message.find('\n') != std::string_view::npos) std::abort();
    return 0;
  }
  gMySysVersion = 0;
  RunProbe();
  if (!IsExpected(platform::OpenReferences())) std::abort();
  platform::EndProcess();
  return 0;
}
