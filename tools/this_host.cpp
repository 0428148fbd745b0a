#include "tools/this_host.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "base/dates.h"
#include "base/printable_text.h"
#include "machines/entries/device_entries.h"

namespace tools {
namespace {

// One line of a terminal that each call writes over, and the last one clears.
void ShowProgress(std::size_t drives, const std::vector<std::string>& awaited) {
  std::string names;
  for (const std::string& name : awaited) {
    names.append(names.empty() ? "" : ", ").append(base::PrintableASCII(name));
  }
  std::string line = std::to_string(drives - awaited.size()) + " of " + std::to_string(drives) +
                     " drives have answered; waiting for " + names;
  if (awaited.empty()) line.clear();
  std::fprintf(stderr, "\r%-78.78s\r", line.c_str());
}

platform::Dictionary Origin() {
  utsname system{};
  uname(&system);  // fails for a bad address alone
  return {{machines::kHostSystemKey, {std::string(machines::kLinux)}},
          {machines::kHostNameKey, {base::PrintableASCII(system.nodename)}},
          {machines::kHostDateKey, {base::Now()}}};
}

}  // namespace

platform::Machine AskHost(const HostFolders& folders, machines::KeptAnswers kept) {
  machines::Asking asking;
  asking.kept = std::move(kept);
  asking.beyondReport = true;
  if (isatty(STDERR_FILENO) != 0) asking.progress = ShowProgress;
  platform::Machine machine =
      machines::AskDisks(machines::ListDisks(folders.sysfs), folders.dev, asking);
  machine.roots.front().properties.emplace(machines::kHostKey, platform::Property{Origin()});
  return machine;
}

}  // namespace tools
