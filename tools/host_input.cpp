#include "tools/host_input.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "base/dates.h"
#include "base/files.h"
#include "drives/report_lines.h"
#include "machines/recorded/read_recording.h"
#include "machines/recorded/recording_files.h"
#include "tools/recorded_host.h"
#include "tools/this_host.h"

namespace tools {
namespace {

// A report begins with a letter. What begins as no report may, but as XML or a binary property list
// do, is read as a recording, whose reader says best what is wrong with it.
bool IsRecording(std::string_view bytes) {
  constexpr std::string_view kBeforeMarkup = "\xEF\xBB\xBF\xFE\xFF \t\r\n";
  const std::string_view markup =
      bytes.substr(std::min(bytes.find_first_not_of(kBeforeMarkup), bytes.size()));
  return markup.starts_with('<') || markup.starts_with(std::string_view("\0<", 2)) ||
         bytes.starts_with("bplist");
}

}  // namespace

drives::Host ReadHostFile(const std::string& file) {
  const std::string bytes = base::ReadUpTo(machines::kMaxRecordingSize + 1, file);
  if (!IsRecording(bytes)) return drives::ParseReport(bytes);
  platform::Machine machine = machines::ParseRecording(bytes, file);
  try {
    return ReadRecordedHost(std::move(machine), base::Now());
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(file + ": " + error.what());
  }
}

drives::Host ReadThisHost() {
  return ReadRecordedHost(AskHost({machines::kSysfs, machines::kDev}), base::Now());
}

}  // namespace tools
