#include "views/field_texts.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <cstddef>

#include "base/dates.h"
#include "base/printable_text.h"

namespace views {
namespace {

using drives::Attribute;
using drives::Drive;
using drives::UnreadDrive;
using Texts = std::vector<std::string>;

// Adds `field` with its label, if it is known.
void Add(Texts& texts, std::string_view label, std::string_view field) {
  const std::string shown = FieldText(field);
  if (!shown.empty()) texts.push_back(fmt::format("{}{}", label, shown));
}

std::string Joined(const Texts& texts) { return fmt::format("{}", fmt::join(texts, ", ")); }

// A drive's own name has no more characters, but the registry may say anything.
std::string ProductText(std::string_view product) {
  constexpr std::size_t kMaxProduct = 40;
  return base::Shortened(FieldText(product), kMaxProduct);
}

void AddDisks(Texts& texts, std::string_view heading, const Texts& disks) {
  Texts names;
  for (const std::string& disk : disks) {
    const std::string name = FieldText(disk);
    names.push_back(name.empty() ? "(no name)" : name);
  }
  if (!names.empty()) texts.push_back(fmt::format("{}: {}", heading, Joined(names)));
}

}  // namespace

std::string FieldText(std::string_view field) { return base::OneLine(base::Trimmed(field, " ")); }

std::string PathText(std::string_view device) {
  return device.empty() ? "(no path)" : base::OneLine(device);
}

std::string WorstText(const Attribute& attribute) {
  return attribute.counts ? std::to_string(attribute.counts->worst) : "";
}

std::string RawText(const Attribute& attribute) {
  return attribute.counts ? std::to_string(attribute.counts->raw) : "";
}

std::string TemperatureText(const Drive& drive) {
  if (!drive.recorded || !drive.recorded->temperature) return "";
  return fmt::format("{} °C", *drive.recorded->temperature);
}

std::string ReadDateText(const Drive& drive) {
  return drive.recorded && drive.recorded->date ? base::DateText(*drive.recorded->date) : "";
}

std::string HealthText(const health::Health& health) {
  const std::string reasons = ReasonsText(health);
  return fmt::format("{}{}{}", RowOf(health.grade).word, reasons.empty() ? "" : ": ", reasons);
}

std::string DescriptionText(const Drive& drive) {
  Texts texts;
  Add(texts, "", ProductText(drive.product));
  Add(texts, "revision ", drive.revision);
  Add(texts, "", drive.capacity);
  Add(texts, "serial ", drive.serial);
  Add(texts, "", TemperatureText(drive));
  Add(texts, "read ", ReadDateText(drive));
  return Joined(texts);
}

std::string NamesText(const UnreadDrive& drive) {
  Texts texts;
  Add(texts, "", ProductText(drive.product));
  Add(texts, "serial ", drive.serial);
  return Joined(texts);
}

std::string UnreadText(const UnreadDrive& drive) {
  const std::string names = NamesText(drive);
  return fmt::format("{}{}{}", PathText(drive.device), names.empty() ? "" : ", ", names);
}

std::string DamageText(const drives::Damage& damage) {
  return fmt::format("line {}: {}", damage.line, damage.what);
}

Texts OtherDisksTexts(const drives::Host& host) {
  Texts texts;
  if (!host.others) return texts;
  AddDisks(texts, "S.M.A.R.T. is missing or off, not read", host.others->withoutSMART);
  AddDisks(texts, "Not ATA, not looked at", host.others->notATA);
  return texts;
}

}  // namespace views
