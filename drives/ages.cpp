#include "drives/ages.h"

#include <algorithm>

namespace drives {

using std::chrono::days;
using std::chrono::sys_seconds;

void AddAges(Host& host, sys_seconds now) {
  std::optional<sys_seconds> newest;
  for (const Drive& drive : host.drives) {
    if (drive.recorded) newest = std::max(newest, drive.recorded->date);
  }
  if (!newest || !host.recorded) return;
  const auto ageOf = [now](sys_seconds date) {
    return std::max(days(0), std::chrono::floor<days>(now - date));
  };
  host.recorded->newestAnswers = ageOf(*newest);
  for (Drive& drive : host.drives) {
    if (!drive.recorded || !drive.recorded->date) continue;
    if (*newest - *drive.recorded->date >= days(1)) {
      drive.recorded->age = ageOf(*drive.recorded->date);
    }
  }
}

}  // namespace drives
