// The host in the text format of Prometheus, for a textfile collector: one metric after
// the other, since the samples of each have to stand together.
#include <fmt/format.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/printable_text.h"
#include "drives/self_tests.h"
#include "health/health.h"
#include "health/signs.h"
#include "views/field_texts.h"
#include "views/metric_labels.h"
#include "views/views.h"

namespace views {
namespace {

using drives::Attribute;
using drives::Drive;
using drives::Host;
using drives::RecordedFacts;

// Appends metric after metric.
class Metrics {
 public:
  void Head(std::string_view name, std::string_view help) {
    name_ = name;
    text_ += fmt::format("# HELP {0} {1}\n# TYPE {0} gauge\n", name, help);
  }

  // Of the metric of the last head.
  template <typename Number>
  void Sample(std::string_view labels, Number value) {
    text_ += fmt::format("{}{{{}}} {}\n", name_, labels, value);
  }

  void Count(std::string_view name, std::string_view help, std::size_t count) {
    Head(name, help);
    text_ += fmt::format("{} {}\n", name, count);
  }

  // `valueOf` gives a number of the subject, or nullopt where it is not known.
  template <typename Subject, typename ValueOf>
  void Each(std::string_view name, std::string_view help,
            const std::vector<Labelled<Subject>>& subjects, ValueOf valueOf) {
    Head(name, help);
    for (const auto& [subject, labels] : subjects) {
      if (const auto value = valueOf(*subject)) Sample(labels, *value);
    }
  }

  std::string Text() && { return std::move(text_); }

 private:
  std::string text_;
  std::string_view name_;
};

using Value = std::optional<std::uint64_t>;

// Gives the fact of a drive.
template <typename Number>
auto Fact(std::optional<Number> RecordedFacts::*fact) {
  return [fact](const Drive& drive) {
    return drive.recorded ? (*drive.recorded).*fact : std::nullopt;
  };
}

std::optional<double> Wear(const Drive& drive) {
  const auto percent = drive.recorded ? drive.recorded->percentageUsed : std::nullopt;
  return percent ? std::optional(*percent / 100.0) : std::nullopt;
}

// nullopt also for a clock that was set before 1970.
Value ReadTime(const Drive& drive) {
  const auto date = drive.recorded ? drive.recorded->date : std::nullopt;
  const std::int64_t seconds = date ? date->time_since_epoch().count() : -1;
  return seconds < 0 ? std::nullopt : Value(static_cast<std::uint64_t>(seconds));
}

Value PowerOnSeconds(const Drive& drive) {
  const auto hours = drive.recorded ? drive.recorded->powerOnHours : std::nullopt;
  return hours ? Value(std::uint64_t{*hours} * 3600) : std::nullopt;
}

Value SelfTestFailed(const Drive& drive) {
  const auto hasFailed = drive.recorded ? health::HasFailedSelfTest(*drive.recorded) : std::nullopt;
  return hasFailed ? Value(*hasFailed) : std::nullopt;
}

// Whether it passed, failed or was aborted.
Value SelfTestTime(const Drive& drive) {
  constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max() / 3600;
  if (!drive.recorded) return std::nullopt;
  for (const drives::SelfTest& test : drive.recorded->selfTests) {
    const bool isOver = test.status != drives::kSelfTestRuns;
    if (isOver && test.powerOnHours && *test.powerOnHours <= kMost)
      return *test.powerOnHours * 3600;
  }
  return std::nullopt;
}

std::optional<double> BytesRead(const Drive& drive) {
  return drive.recorded ? drive.recorded->bytesRead : std::nullopt;
}

std::optional<double> BytesWritten(const Drive& drive) {
  return drive.recorded ? drive.recorded->bytesWritten : std::nullopt;
}

Value Worst(const Attribute& attribute) {
  return attribute.counts ? Value(attribute.counts->worst) : std::nullopt;
}

Value Raw(const Attribute& attribute) {
  return attribute.counts ? Value(attribute.counts->raw) : std::nullopt;
}

void AppendCounts(Metrics& metrics, const Host& host) {
  metrics.Count("smartprobe_drives_read", "How many drives were read.", host.drives.size());
  metrics.Count("smartprobe_drives_not_read", "How many drives could not be read.",
                host.notRead.size());
  if (!host.recorded) return;
  metrics.Count("smartprobe_drives_gone", "How many drives were there before and are gone.",
                host.gone.size());
  metrics.Count("smartprobe_disks_not_looked_at", "How many disks were not asked.",
                host.recorded->notAsked.size());
  metrics.Count("smartprobe_drives_without_smart",
                "How many drives have no S.M.A.R.T., or none that can be enabled.",
                host.recorded->withoutSMART.size());
}

void AppendInfo(Metrics& metrics, const Devices& devices) {
  metrics.Head("smartprobe_drive_info", "What the drive is; always 1.");
  for (const auto& [drive, labels] : devices.read) {
    metrics.Sample(JoinedLabels(labels, Labels({{"revision", base::Trimmed(drive->revision, " ")},
                                                {"capacity", base::Trimmed(drive->capacity, " ")},
                                                {"protocol", ProtocolText(*drive)}})),
                   1);
  }
}

void AppendDrives(Metrics& metrics, const Devices& devices) {
  metrics.Each<Drive>("smartprobe_drive_threshold_exceeded",
                      "Whether the drive reports that a threshold is exceeded.", devices.read,
                      [](const Drive& drive) { return Value(drive.thresholdExceeded); });
  metrics.Each<Drive>("smartprobe_drive_attributes", "How many attributes the drive has.",
                      devices.read,
                      [](const Drive& drive) { return Value(drive.attributes.size()); });
  metrics.Each<Drive>("smartprobe_drive_temperature_celsius", "The temperature of the drive.",
                      devices.read, Fact(&RecordedFacts::temperature));
  metrics.Each<Drive>("smartprobe_drive_temperature_limit_celsius",
                      "The drive's own limit, from which on it is too hot.", devices.read,
                      Fact(&RecordedFacts::temperatureLimit));
  metrics.Each<Drive>("smartprobe_drive_wear_ratio",
                      "How much of its life the drive has used, by its own count; 1 is all.",
                      devices.read, Wear);
  metrics.Each<Drive>("smartprobe_drive_read_time_seconds",
                      "When the drive answered, in seconds since 1970.", devices.read, ReadTime);
  metrics.Each<Drive>("smartprobe_drive_power_on_seconds", "How long the drive has been on.",
                      devices.read, PowerOnSeconds);
  metrics.Each<Drive>("smartprobe_drive_capacity_bytes", "The capacity of the drive.", devices.read,
                      Fact(&RecordedFacts::capacity));
  metrics.Each<Drive>("smartprobe_drive_self_test_failed",
                      "Whether the last self-test of the drive has failed.", devices.read,
                      SelfTestFailed);
  metrics.Each<Drive>("smartprobe_drive_self_test_power_on_seconds",
                      "How long the drive had been on when its last self-test ended.", devices.read,
                      SelfTestTime);
  metrics.Each<Drive>("smartprobe_drive_read_bytes", "How much was read from the drive in all.",
                      devices.read, BytesRead);
  metrics.Each<Drive>("smartprobe_drive_written_bytes", "How much was written to the drive in all.",
                      devices.read, BytesWritten);
}

// Sectors or errors, told apart by the label `label`.
void AppendLosses(Metrics& metrics, const Devices& devices, bool ofSectors,
                  std::string_view label) {
  for (const auto& [drive, labels] : devices.read) {
    if (!drive->recorded) continue;
    for (const drives::LossCount& loss : drive->recorded->losses) {
      if (loss.ofSectors != ofSectors || !loss.count) continue;
      metrics.Sample(JoinedLabels(labels, Labels({{label, loss.name}})), *loss.count);
    }
  }
}

void AppendLosses(Metrics& metrics, const Devices& devices) {
  metrics.Head("smartprobe_drive_sectors", "How many sectors the drive has lost.");
  AppendLosses(metrics, devices, true, "state");
  metrics.Head("smartprobe_drive_errors", "How many errors with lost data the drive has met.");
  AppendLosses(metrics, devices, false, "kind");
}

void AppendHealth(Metrics& metrics, const Devices& devices) {
  const auto append = [&](const std::string& labels, health::Grade grade) {
    metrics.Sample(JoinedLabels(labels, Labels({{"grade", health::RowOf(grade).word}})), 1);
  };
  metrics.Head("smartprobe_drive_health", "The grade of the drive; always 1.");
  for (const auto& [drive, labels] : devices.read) append(labels, health::HealthOf(*drive).grade);
  for (const std::string& labels : devices.notRead) append(labels, health::Grade::kNotRead);
  for (const std::string& labels : devices.gone) append(labels, health::Grade::kGone);
}

void AppendReadFailed(Metrics& metrics, const Devices& devices) {
  metrics.Head("smartprobe_drive_read_failed", "Whether the drive could not be read.");
  for (const auto& [drive, labels] : devices.read) metrics.Sample(labels, 0);
  for (const std::string& labels : devices.notRead) metrics.Sample(labels, 1);
}

void AppendAttributes(Metrics& metrics, const Devices& devices) {
  const auto& attributes = devices.attributes;
  metrics.Each<Attribute>("smartprobe_attribute_value", "The normalized value of the attribute.",
                          attributes,
                          [](const Attribute& attribute) { return Value(attribute.value); });
  metrics.Each<Attribute>("smartprobe_attribute_threshold",
                          "The threshold of the attribute's value.", attributes,
                          [](const Attribute& attribute) { return Value(attribute.threshold); });
  metrics.Each<Attribute>(
      "smartprobe_attribute_reached", "Whether the attribute's value has reached its threshold.",
      attributes, [](const Attribute& attribute) { return Value(health::IsReached(attribute)); });
  metrics.Each<Attribute>("smartprobe_attribute_worst", "The least normalized value so far.",
                          attributes, Worst);
  metrics.Each<Attribute>("smartprobe_attribute_raw",
                          "The attribute's raw value, which is the maker's own.", attributes, Raw);
}

}  // namespace

std::string MetricsText(const Host& host) {
  const Devices devices = DevicesOf(host);
  Metrics metrics;
  AppendCounts(metrics, host);
  AppendInfo(metrics, devices);
  AppendDrives(metrics, devices);
  AppendHealth(metrics, devices);
  AppendLosses(metrics, devices);
  AppendReadFailed(metrics, devices);
  AppendAttributes(metrics, devices);
  return std::move(metrics).Text();
}

}  // namespace views
