// Any bytes into the reader of recorded machines: a machine, or one line of error.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "machines/recorded/recorded_machine.h"
#include "machines/recorded/recording_error.h"

platform::Machine& platform::ThisMachine() { std::abort(); }  // nothing is asked of it

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view file(reinterpret_cast<const char*>(data), size);
  try {
    machines::ReadRecordedMachine(file);
  } catch (const machines::RecordingError& error) {
    const std::string_view message = error.what();
    if (message.empty() || message.find('\n') != std::string_view::npos) std::abort();
  }
  return 0;
}
