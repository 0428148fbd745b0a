#include "views/charts.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "base/dates.h"
#include "views/html.h"

namespace views {
namespace {

using drives::Moment;

struct Point {
  std::chrono::sys_seconds date;
  std::int64_t value;
};
using Points = std::vector<Point>;

template <typename ValueOf>
Points PointsOf(const std::vector<Moment>& history, ValueOf valueOf) {
  Points points;
  for (const Moment& moment : history) {
    const std::optional<std::int64_t> value = valueOf(moment);
    if (value) points.push_back({moment.date, *value});
  }
  return points;
}

std::optional<std::int64_t> Temperature(const Moment& moment) { return moment.temperature; }
std::optional<std::int64_t> Wear(const Moment& moment) { return moment.percentageUsed; }

// Of all kinds together.
std::optional<std::int64_t> LostSectors(const Moment& moment) {
  std::optional<std::int64_t> sum;
  for (const drives::LossCount& loss : moment.losses) {
    if (!loss.ofSectors || !loss.count) continue;
    sum =
        sum.value_or(0) + static_cast<std::int64_t>(std::min<std::uint64_t>(*loss.count, 1U << 31));
  }
  return sum;
}

// The picture's measures, in its own units.
constexpr int kLeft = 60;
constexpr int kRight = 390;
constexpr int kTop = 10;
constexpr int kBottom = 80;

// The lines of the chart, from the first day to the last and from the least value to the largest.
// Their ends have labels. A chart of one value has it in its middle.
void AppendChart(std::string& page, std::string_view name, std::string_view unit,
                 const Points& points) {
  if (points.size() < 2) return;
  const auto [least, most] = std::ranges::minmax(points, {}, &Point::value);
  const auto first = points.front().date;
  const std::int64_t time = std::max<std::int64_t>(1, (points.back().date - first).count());
  const std::int64_t low = least.value == most.value ? least.value - 1 : least.value;
  const std::int64_t high = least.value == most.value ? most.value + 1 : most.value;
  Append(page,
         "<figure><figcaption>{0}</figcaption><svg class=\"chart\" viewBox=\"0 0 400 100\" "
         "role=\"img\" aria-label=\"{0} from {1} to {2}{3}\">"
         "<path class=\"axis\" d=\"M{4} {6}V{7}H{5}\"/><polyline points=\"",
         name, least.value, most.value, unit, kLeft, kRight, kTop, kBottom);
  for (const auto& [date, value] : points) {
    const double x = kLeft + static_cast<double>(kRight - kLeft) *
                                 static_cast<double>((date - first).count()) /
                                 static_cast<double>(time);
    const double y = kBottom - static_cast<double>(kBottom - kTop) *
                                   static_cast<double>(value - low) /
                                   static_cast<double>(high - low);
    Append(page, "{:.1f},{:.1f} ", x, y);
  }
  Append(page,
         "\"/><text x=\"{0}\" y=\"{1}\" class=\"end\">{2}{3}</text>"
         "<text x=\"{0}\" y=\"{4}\" class=\"end\">{5}{3}</text>"
         "<text x=\"{6}\" y=\"{7}\">{8}</text><text x=\"{9}\" y=\"{7}\" class=\"end\">{10}</text>"
         "</svg></figure>\n",
         kLeft - 5, kTop + 4, most.value, unit, kBottom, least.value, kLeft, kBottom + 15,
         base::DayText(first), kRight, base::DayText(points.back().date));
}

}  // namespace

void AppendCharts(std::string& page, const drives::Drive& drive) {
  if (!drive.recorded || drive.recorded->history.empty()) return;
  const std::vector<Moment>& history = drive.recorded->history;
  std::string charts;
  AppendChart(charts, "Temperature", " °C", PointsOf(history, Temperature));
  AppendChart(charts, "Lost sectors", "", PointsOf(history, LostSectors));
  AppendChart(charts, "Life used", " %", PointsOf(history, Wear));
  if (!charts.empty()) Append(page, "<div class=\"charts\">\n{}</div>\n", charts);
}

}  // namespace views
