#include "drives/ages.h"

#include <algorithm>
#include <optional>

namespace drives {

using std::chrono::days;
using std::chrono::sys_seconds;

void AddAges(Host& host, sys_seconds now) {
  if (!host.recorded) return;
  std::optional<sys_seconds> newest;
  const auto add = [&](std::optional<sys_seconds> date) {
    if (!date) return;
    const bool isLater = *date > now + days(1);
    host.recorded->isDatedLater |= isLater;
    if (!isLater) newest = std::max(newest, std::optional(std::min(*date, now)));
  };
  for (const Drive& drive : host.drives) {
    if (drive.recorded) add(drive.recorded->date);
  }
  if (!newest) add(host.recorded->date);
  if (!newest) return;
  host.recorded->newestAnswers = now - *newest;
  for (Drive& drive : host.drives) {
    if (!drive.recorded || !drive.recorded->date) continue;
    if (*newest - *drive.recorded->date < days(1)) continue;
    drive.recorded->age = std::chrono::floor<days>(now - *drive.recorded->date);
  }
}

}  // namespace drives
