// Reads any bytes as a recording. They must give an error of one line, or a machine. A whole pass
// over the machine must leave open only what the probe leaves open on purpose. Then every form of
// the machine is made.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

#include "machines/recorded/read_recording.h"
#include "machines/recorded/recording_format.h"
#include "platform/ledger.h"
#include "platform/machine.h"
#include "probe/pass/start_up.h"
#include "tests/every_form.h"

static bool IsExpected(platform::Ledger left) {
  using enum platform::ReferenceKind;
  return left[kMatchingDictionary] == 0 && left[kFoundValue] == 0 && left[kString] == 0 &&
         left[kPlugIn] == left[kSMARTInterface] && left[kMemoryBlock] <= 1 && left[kIterator] <= 2;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  [[maybe_unused]] static FILE* const nowhere = std::freopen("/dev/null", "w", stdout);
  try {
    platform::SetMachine(machines::ReadRecording({reinterpret_cast<const char*>(data), size}));
  } catch (const machines::RecordingError& error) {
    const std::string_view message = error.what();
    if (message.empty() || message.find('\n') != std::string_view::npos) std::abort();
    return 0;
  }
  RunProbe();
  if (!IsExpected(platform::OpenReferences())) std::abort();
  try {
    test::ShowInEveryForm(platform::ThisMachine());
  } catch (const std::runtime_error&) {
    return 0;  // too many disks, or too old a system
  }
  return 0;
}
