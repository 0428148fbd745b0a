#include "machines/recorded/recording_files.h"

#include <stdexcept>

#include "base/files.h"
#include "machines/recorded/read_recording.h"
#include "machines/recorded/recording_format.h"

namespace machines {

platform::Machine ParseRecording(std::string_view bytes, const std::string& file) {
  try {
    return ReadRecording(bytes);
  } catch (const RecordingError& error) {
    throw std::runtime_error(file + ": " + error.what());
  }
}

// Reads one byte more than a recording may have, so that ReadRecording sees that it is too large.
platform::Machine ReadRecordingFile(const std::string& file) {
  return ParseRecording(base::ReadUpTo(kMaxRecordingSize + 1, file), file);
}

}  // namespace machines
