// The host as one JSON document.
#include <rapidjson/writer.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "base/count128.h"
#include "drives/attribute_blocks.h"
#include "health/health.h"
#include "views/field_texts.h"
#include "views/views.h"

namespace views {
namespace {

using drives::Attribute;
using drives::Drive;
using drives::Host;

// What RapidJSON writes to. Its own buffer does not notice that memory runs out.
struct Output {
  using Ch = char;
  void Put(char c) { text += c; }
  void Flush() {}
  std::string text = {};
};
void PutUnsafe(Output& output, char c) { output.Put(c); }

// In ASCII, whatever the texts are: every other character is escaped, and so comes through any
// channel as it was.
using Writer = rapidjson::Writer<Output, rapidjson::UTF8<>, rapidjson::ASCII<>>;

void Key(Writer& json, std::string_view key) {
  json.Key(key.data(), static_cast<rapidjson::SizeType>(key.size()));
}

void Put(Writer& json, std::string_view text) {
  json.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
}
void Put(Writer& json, bool value) { json.Bool(value); }
void Put(Writer& json, int value) { json.Int(value); }
void Put(Writer& json, unsigned value) { json.Uint(value); }
void Put(Writer& json, std::uint64_t value) { json.Uint64(value); }
void Put(Writer& json, std::int64_t value) { json.Int64(value); }

template <typename Value>
void Put(Writer& json, std::string_view key, const Value& value) {
  Key(json, key);
  Put(json, value);
}

void PutDate(Writer& json, std::optional<std::chrono::sys_seconds> date) {
  if (date) Put(json, "unix_time", std::int64_t{date->time_since_epoch().count()});
}

void PutAttribute(Writer& json, const Attribute& attribute) {
  json.StartObject();
  Put(json, "id", unsigned{attribute.id});
  Put(json, "name", attribute.name);
  Put(json, "flags", unsigned{attribute.flags});
  Put(json, "flags_ata", unsigned{drives::StandardFlags(attribute.flags)});
  Put(json, "value", unsigned{attribute.value});
  Put(json, "threshold", unsigned{attribute.threshold});
  Put(json, "valid", attribute.valid);
  Put(json, "pre_failure", attribute.preFailure);
  Put(json, "reached", health::IsReached(attribute));
  if (attribute.counts) {
    Put(json, "worst", unsigned{attribute.counts->worst});
    Put(json, "raw", attribute.counts->raw);
  }
  json.EndObject();
}

// "12345678" bytes as "0.012345678", exactly.
std::string GigabytesText(std::string bytes) {
  constexpr std::size_t kDecimals = 9;
  if (bytes.size() <= kDecimals) bytes.insert(0, kDecimals + 1 - bytes.size(), '0');
  return bytes.insert(bytes.size() - kDecimals, 1, '.');
}

void PutValue(Writer& json, const drives::Figure& figure) {
  std::string text = ToText(figure.value);
  if (figure.unit == drives::Unit::kCelsius) {
    text = std::to_string(static_cast<std::int64_t>(figure.value.low));
  }
  if (figure.unit == drives::Unit::kBytes) text = GigabytesText(text);
  json.RawValue(text.data(), text.size(), rapidjson::kNumberType);
}

// The figures of a group, which is an array where they have no keys.
void PutGroup(Writer& json, std::span<const drives::Figure> figures) {
  const drives::Figure& first = figures.front();
  const bool isArray = first.key.empty();
  if (!first.group.empty()) Key(json, first.group);
  if (!first.group.empty()) isArray ? json.StartArray() : json.StartObject();
  for (const drives::Figure& figure : figures) {
    if (!isArray) Key(json, figure.key);
    PutValue(json, figure);
  }
  if (!first.group.empty()) isArray ? json.EndArray() : json.EndObject();
}

// The figures at the start of `figures` that have the same text in `member` as the first.
std::span<const drives::Figure> Together(std::span<const drives::Figure> figures,
                                         std::string_view drives::Figure::*member) {
  std::size_t size = 1;
  while (size < figures.size() && figures[size].*member == figures[0].*member) size++;
  return figures.first(size);
}

void PutFigures(Writer& json, std::span<const drives::Figure> figures) {
  while (!figures.empty()) {
    auto section = Together(figures, &drives::Figure::section);
    figures = figures.subspan(section.size());
    const std::string_view name = section.front().section;
    if (!name.empty()) Key(json, name);
    if (!name.empty()) json.StartObject();
    while (!section.empty()) {
      const auto group = Together(section, &drives::Figure::group);
      PutGroup(json, group);
      section = section.subspan(group.size());
    }
    if (!name.empty()) json.EndObject();
  }
}

// "pending_sectors", "media_errors", "uncorrected_read_errors"
std::string KeyOf(const drives::LossCount& loss) {
  std::string key(loss.name);
  std::ranges::replace(key, ' ', '_');
  return key + (loss.ofSectors ? "_sectors" : "_errors");
}

void PutSelfTest(Writer& json, const drives::SelfTest& test) {
  Key(json, "last_self_test");
  json.StartObject();
  Put(json, "type", test.type);
  Put(json, "status", test.status);
  if (test.passed) Put(json, "passed", *test.passed);
  if (test.powerOnHours) Put(json, "power_on_hours", *test.powerOnHours);
  if (test.lba) Put(json, "lba", *test.lba);
  json.EndObject();
}

void PutHistory(Writer& json, const std::vector<drives::Moment>& history) {
  Key(json, "history");
  json.StartArray();
  for (const drives::Moment& moment : history) {
    json.StartObject();
    PutDate(json, moment.date);
    if (moment.temperature) Put(json, "temperature_celsius", *moment.temperature);
    for (const drives::LossCount& loss : moment.losses) {
      if (loss.count) Put(json, KeyOf(loss), *loss.count);
    }
    if (moment.percentageUsed) Put(json, "percentage_used", *moment.percentageUsed);
    json.EndObject();
  }
  json.EndArray();
}

void PutRecorded(Writer& json, const drives::RecordedFacts& recorded) {
  if (recorded.temperature) Put(json, "temperature_celsius", *recorded.temperature);
  for (const drives::LossCount& loss : recorded.losses) {
    if (!loss.ofSectors) continue;
    Key(json, KeyOf(loss));
    loss.count ? Put(json, *loss.count) : void(json.Null());
  }
  if (recorded.capacity) Put(json, "capacity_bytes", *recorded.capacity);
  if (recorded.powerOnHours) Put(json, "power_on_hours", *recorded.powerOnHours);
  if (recorded.powerCycles) Put(json, "power_cycles", *recorded.powerCycles);
  if (recorded.rotationRate) Put(json, "rotation_rate", *recorded.rotationRate);
  if (recorded.temperatureLimit) {
    Put(json, "temperature_limit_celsius", *recorded.temperatureLimit);
  }
  if (recorded.percentageUsed) Put(json, "percentage_used", *recorded.percentageUsed);
  PutFigures(json, recorded.figures);
  if (recorded.selfTest) Put(json, "last_self_test_status", *recorded.selfTest);
  if (!recorded.history.empty()) PutHistory(json, recorded.history);
  if (!recorded.selfTests.empty()) PutSelfTest(json, recorded.selfTests.front());
  PutDate(json, recorded.date);
}

void PutHealth(Writer& json, const health::Health& health) {
  Put(json, "health", RowOf(health.grade).word);
  Key(json, "reasons");
  json.StartArray();
  for (const health::Reason& reason : health.reasons) Put(json, reason.text);
  json.EndArray();
}

void PutDrive(Writer& json, const Drive& drive) {
  json.StartObject();
  Put(json, "device", drive.device);
  Put(json, "product", drive.product);
  Put(json, "revision", drive.revision);
  Put(json, "capacity", drive.capacity);
  Put(json, "serial", drive.serial);
  if (!drives::DiskOf(drive).empty()) Put(json, "disk", drives::DiskOf(drive));
  Put(json, "protocol", ProtocolText(drive));
  Put(json, "threshold_exceeded", drive.thresholdExceeded);
  PutHealth(json, health::HealthOf(drive));
  if (drive.recorded) PutRecorded(json, *drive.recorded);
  Key(json, "attributes");
  json.StartArray();
  for (const Attribute& attribute : drive.attributes) PutAttribute(json, attribute);
  json.EndArray();
  json.EndObject();
}

void PutUnreadDrives(Writer& json, const Host& host) {
  Key(json, "not_read_drives");
  json.StartArray();
  for (const drives::UnreadDrive& drive : host.notRead) {
    json.StartObject();
    Put(json, "device", drive.device);
    Put(json, "product", drive.product);
    Put(json, "serial", drive.serial);
    if (!drive.why.empty()) Put(json, "reason", drive.why);
    json.EndObject();
  }
  json.EndArray();
}

void PutGoneDrives(Writer& json, const Host& host) {
  Key(json, "gone");
  json.StartArray();
  for (const drives::GoneDrive& gone : host.gone) {
    json.StartObject();
    Put(json, "product", gone.names.product);
    Put(json, "serial", gone.names.serial);
    Put(json, "since_unix_time", std::int64_t{gone.since.time_since_epoch().count()});
    if (!gone.names.why.empty()) Put(json, "reason", gone.names.why);
    if (gone.drive) PutHealth(json, health::HealthOf(*gone.drive));
    json.EndObject();
  }
  json.EndArray();
}

void PutNames(Writer& json, std::string_view key, const std::vector<std::string>& names) {
  Key(json, key);
  json.StartArray();
  for (const std::string& name : names) Put(json, name);
  json.EndArray();
}

void PutRest(Writer& json, const Host& host) {
  std::vector<std::string> paths;
  for (const drives::UnreadDrive& drive : host.notRead) paths.push_back(drive.device);
  json.StartObject();
  PutNames(json, "not_read", paths);
  if (host.recorded) {
    PutUnreadDrives(json, host);
    PutGoneDrives(json, host);
    PutNames(json, "without_smart", host.recorded->withoutSMART);
    PutNames(json, "not_asked", host.recorded->notAsked);
    if (!host.recorded->name.empty()) Put(json, "host", host.recorded->name);
    PutDate(json, host.recorded->date);
  }
  json.EndObject();
}

template <typename Subject>
std::string Text(void (*put)(Writer&, const Subject&), const Subject& subject) {
  Output output;
  Writer json(output);
  put(json, subject);
  return std::move(output.text);
}

}  // namespace

// The library writes no line feeds, so the objects are put together here.
std::string JsonText(const Host& host, std::string_view version) {
  std::string text = "{\"drives\":[";
  for (const Drive& drive : host.drives) {
    text.append(&drive == &host.drives.front() ? "\n" : ",\n").append(Text(PutDrive, drive));
  }
  if (!host.drives.empty()) text += '\n';
  text.append("],").append(Text(PutRest, host), 1).pop_back();
  return text.append(R"(,"version":")").append(version).append("\"}\n");
}

}  // namespace views
