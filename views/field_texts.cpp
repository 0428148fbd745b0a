#include "views/field_texts.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>

#include "base/byte_count.h"
#include "base/count128.h"
#include "base/dates.h"
#include "base/printable_text.h"
#include "drives/ages.h"

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

template <typename AnyDrive>
std::string PathOf(const AnyDrive& drive) {
  const std::string& path = drive.localPath.empty() ? drive.device : drive.localPath;
  return path.empty() ? "(no path)" : base::OneLine(path);
}

// Of the count that `isOfRow` picks.
template <typename IsOfRow>
std::string GrowthOf(const Drive& drive, IsOfRow isOfRow) {
  if (!drive.recorded) return "";
  std::vector<drives::LossCount> counts = drive.recorded->losses;
  if (drive.recorded->crcErrors) counts.push_back(*drive.recorded->crcErrors);
  for (const drives::LossCount& loss : counts) {
    if (loss.growth == 0 || !isOfRow(loss)) continue;
    return fmt::format(" (+{} in {} days)", loss.growth, drives::kGrowthDays.count());
  }
  return "";
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

std::string PathText(const Drive& drive) { return PathOf(drive); }
std::string PathText(const UnreadDrive& drive) { return PathOf(drive); }

std::string_view ProtocolText(const Drive& drive) {
  constexpr std::array<std::string_view, 3> kWords = {"ATA", "NVMe", "SCSI"};
  return kWords.at(static_cast<std::size_t>(drive.protocol));
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

std::string TemperatureLimitText(const Drive& drive) {
  if (!drive.recorded || !drive.recorded->temperatureLimit) return "";
  return fmt::format("{} °C", *drive.recorded->temperatureLimit);
}

std::string WrittenText(const Drive& drive) {
  if (!drive.recorded || !drive.recorded->bytesWritten) return "";
  return base::ByteCountText(*drive.recorded->bytesWritten);
}

std::string UsedText(const Drive& drive) {
  if (!drive.recorded || !drive.recorded->percentageUsed) return "";
  return fmt::format("{} %", *drive.recorded->percentageUsed);
}

std::string PowerOnText(const Drive& drive) {
  constexpr double kHoursAYear = 365.25 * 24;
  if (!drive.recorded || !drive.recorded->powerOnHours) return "";
  const std::uint32_t hours = *drive.recorded->powerOnHours;
  return fmt::format("{} hour{} ({:.1f} years)", hours, hours == 1 ? "" : "s", hours / kHoursAYear);
}

std::string PowerCyclesText(const Drive& drive) {
  if (!drive.recorded || !drive.recorded->powerCycles) return "";
  return std::to_string(*drive.recorded->powerCycles);
}

std::string RotationText(const Drive& drive) {
  if (!drive.recorded || !drive.recorded->rotationRate) return "";
  const int rate = *drive.recorded->rotationRate;
  return rate == 0 ? "SSD" : fmt::format("{} rpm", rate);
}

std::string ReadDateText(const Drive& drive) {
  return drive.recorded && drive.recorded->date ? base::DateText(*drive.recorded->date) : "";
}

// The count of an ATA drive's log has 16 bits, and begins again after 7 years.
SelfTestTexts TextsOf(const drives::SelfTest& test, const Drive& drive) {
  constexpr std::uint64_t kRound = 0x10000;
  const auto then = test.powerOnHours;
  std::string hours = then ? fmt::format("{} h", *then) : "";
  const bool isATA = drive.protocol == drives::Protocol::kATA;
  const auto now = drive.recorded ? drive.recorded->powerOnHours : std::nullopt;
  if (then && now && *now >= *then) {
    const std::uint64_t age = *now - *then;
    hours += fmt::format(", {} h ago", isATA ? age % kRound : age);
  }
  return {std::string(test.type), test.status, hours, test.lba ? std::to_string(*test.lba) : ""};
}

std::string GrowthText(const Drive& drive, const Attribute& attribute) {
  return GrowthOf(drive, [&](const drives::LossCount& loss) {
    return loss.key.empty() && loss.id == attribute.id;
  });
}

std::string GrowthText(const Drive& drive, const drives::Figure& figure) {
  return GrowthOf(drive, [&](const drives::LossCount& loss) {
    return !loss.key.empty() && loss.key == figure.key && loss.group == figure.group;
  });
}

std::string FigureText(const drives::Figure& figure) {
  std::string number = ToText(figure.value);
  const double value = ToDouble(figure.value);
  switch (figure.unit) {
    case drives::Unit::kNone:
      return number;
    case drives::Unit::kPercent:
      return number + " %";
    case drives::Unit::kCelsius:
      return fmt::format("{} °C", static_cast<std::int64_t>(figure.value.low));
    case drives::Unit::kMinutes:
      return number + " min";
    case drives::Unit::kHours:
      return number + " h";
    case drives::Unit::kDataUnits:
      return fmt::format("{} ({})", number, base::ByteCountText(value * figure.unitSize));
    case drives::Unit::kBytes:
      return base::ByteCountText(value);
  }
  return number;
}

std::string RowText(const health::Health& health, const drives::Figure& figure) {
  return std::string(health::RowOf(FigureGrade(health, figure)).word);
}

std::string RowText(const health::Health& health, const Attribute& attribute) {
  const health::Grade grade = RowGrade(health, attribute);
  const bool wasReached = grade == health::Grade::kGood && health::WasReached(attribute);
  return wasReached ? "once" : std::string(health::RowOf(grade).word);
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
  Add(texts, "", RotationText(drive));
  Add(texts, "on for ", PowerOnText(drive));
  const std::string cycles = PowerCyclesText(drive);
  Add(texts, "", cycles.empty() ? "" : cycles + (cycles == "1" ? " power cycle" : " power cycles"));
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
  const std::string why = FieldText(drive.why);
  return fmt::format("{}{}{}{}{}", PathText(drive), names.empty() ? "" : ", ", names,
                     why.empty() ? "" : ": ", why);
}

std::string GoneText(const drives::GoneDrive& gone) {
  std::string before = gone.names.why.empty() ? "" : "not read: " + FieldText(gone.names.why);
  if (gone.drive) {
    const health::Health health = health::HealthOf(*gone.drive);
    if (health.grade != health::Grade::kGood) before = HealthText(health);
  }
  const bool hasName = !gone.names.product.empty() || !gone.names.serial.empty();
  return fmt::format("gone since {}: {}{}{}{}{}", base::DayText(gone.since),
                     hasName ? "" : "(no name)", ProductText(gone.names.product),
                     gone.names.serial.empty() ? "" : " " + FieldText(gone.names.serial),
                     before.empty() ? "" : " (" + before, before.empty() ? "" : ")");
}

std::string AgeFault(const drives::Host& host, std::chrono::days maxAge) {
  if (!host.recorded) return "";
  if (host.recorded->isDatedLater)
    return "the answers have a date in the future: look at the clock";
  const auto age = host.recorded->newestAnswers.value_or(std::chrono::seconds(0));
  if (age <= maxAge) return "";
  const auto days = std::chrono::floor<std::chrono::days>(age).count();
  return fmt::format("the newest answers are {} day{} old", days, days == 1 ? "" : "s");
}

std::string AgeText(const drives::Host& host) {
  std::string text = AgeFault(host, drives::kFresh);
  if (text.empty()) return text;
  text.front() = 'T';
  return text + ".";
}

std::string OriginText(const drives::Host& host) {
  Texts texts;
  if (!host.recorded) return "";
  Add(texts, "", host.recorded->name);
  if (host.recorded->date) texts.push_back(base::DateText(*host.recorded->date));
  return Joined(texts);
}

std::string DamageText(const drives::Damage& damage) {
  return fmt::format("line {}: {}", damage.line, damage.what);
}

Texts OtherDisksTexts(const drives::Host& host) {
  Texts texts;
  if (!host.recorded) return texts;
  AddDisks(texts, "S.M.A.R.T. is missing or off, not read", host.recorded->withoutSMART);
  AddDisks(texts, "Not asked", host.recorded->notAsked);
  return texts;
}

}  // namespace views
