#include "report/field_texts.h"

#include <array>
#include <cstddef>
#include <cstdio>

#include "base/printable_text.h"
#include "report/health.h"

namespace report {
namespace {

void Append(std::string& text, std::string_view label, std::string_view field) {
  const std::string shown = FieldText(field);
  if (!shown.empty()) text.append(text.empty() ? "" : ", ").append(label).append(shown);
}

// A drive's own name has no more characters, but the registry may say anything.
std::string ProductText(std::string_view product) {
  constexpr std::size_t kMaxProduct = 40;
  return base::Shortened(FieldText(product), kMaxProduct);
}

}  // namespace

std::string FieldText(std::string_view field) { return base::OneLine(base::Trimmed(field, " ")); }

std::string WorstText(const Attribute& attribute) {
  return attribute.counts ? std::to_string(attribute.counts->worst) : "";
}

std::string RawText(const Attribute& attribute) {
  return attribute.counts ? std::to_string(attribute.counts->raw) : "";
}

std::string TemperatureText(const Drive& drive) {
  return drive.temperature ? std::to_string(*drive.temperature) + " °C" : "";
}

std::string DateText(std::chrono::sys_seconds date) {
  const auto midnight = std::chrono::floor<std::chrono::days>(date);
  const std::chrono::year_month_day day(midnight);
  const std::chrono::hh_mm_ss time(date - midnight);
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02u %02d:%02d UTC",
                static_cast<int>(day.year()), static_cast<unsigned>(day.month()),
                static_cast<unsigned>(day.day()), static_cast<int>(time.hours().count()),
                static_cast<int>(time.minutes().count()));
  return text.data();
}

std::string DescriptionText(const Drive& drive) {
  std::string text;
  Append(text, "", ProductText(drive.product));
  Append(text, "revision ", drive.revision);
  Append(text, "", drive.capacity);
  Append(text, "serial ", drive.serial);
  Append(text, "", TemperatureText(drive));
  if (drive.date) Append(text, "read ", DateText(*drive.date));
  return text;
}

std::string NamesText(const UnreadDrive& drive) {
  std::string text;
  Append(text, "", ProductText(drive.product));
  Append(text, "serial ", drive.serial);
  return text;
}

std::string UnreadText(const UnreadDrive& drive) {
  const std::string names = NamesText(drive);
  return PathText(drive.device) + (names.empty() ? "" : ", " + names);
}

}  // namespace report
