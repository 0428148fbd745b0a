#include "machines/recorded/recording_error.h"

#include "base/printable_text.h"

namespace machines {

RecordingError::RecordingError(std::string_view message)
    : std::runtime_error(base::OneLine(message)) {}

std::string Shortened(std::string_view text) {
  constexpr std::size_t kLongest = 80;
  if (text.size() <= kLongest) return std::string(text);
  return std::string(text.substr(0, kLongest)) + "...";
}

}  // namespace machines
