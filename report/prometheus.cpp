// The report in the text format of Prometheus, for a textfile collector: one metric after
// the other, since the samples of each have to stand together.
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/printable_text.h"
#include "report/forms.h"
#include "report/health.h"

namespace report {
namespace {

// In characters. A label stands on many series, which a long one would blow up.
constexpr std::size_t kMaxLabel = 64;

struct Label {
  std::string_view name;
  std::string_view value;
};

// Those without a value are left out, which is the same to Prometheus.
std::string Labels(std::initializer_list<Label> labels) {
  std::string text;
  for (const Label& label : labels) {
    if (label.value.empty()) continue;
    if (!text.empty()) text += ',';
    text.append(label.name).append("=\"");
    for (const char c : base::Shortened(base::OneLine(label.value), kMaxLabel)) {
      if (c == '\\' || c == '"') text += '\\';
      text += c;
    }
    text += '"';
  }
  return text;
}

// `ones` and then `others`, of which either may be no labels.
std::string Joined(const std::string& ones, const std::string& others) {
  return ones + (ones.empty() || others.empty() ? "" : ",") + others;
}

struct ReadDrive {
  const Drive* drive;
  std::string labels;
};

struct Devices {
  std::vector<ReadDrive> read;
  std::vector<std::string> notRead;  // their labels
};

// The name that other collectors know the disk of that path by: "sda" of /dev/rsda.
std::string_view DiskOf(std::string_view device) {
  constexpr std::string_view kRawDevice = "/dev/r";
  return device.starts_with(kRawDevice) ? device.substr(kRawDevice.size()) : "";
}

// Gives the labels of one device after the other, and numbers all but the first of one path, so
// that no series is there twice.
class DeviceLabels {
 public:
  template <typename AnyDrive>  // Drive or UnreadDrive
  std::string Next(const AnyDrive& drive) {
    const int number = counts_[Labels({{"device", drive.device}})]++;
    return Labels({{"device", drive.device},
                   {"disk", DiskOf(drive.device)},
                   {"drive", number == 0 ? "" : std::to_string(number)},
                   {"product", base::Trimmed(drive.product, " ")},
                   {"serial", base::Trimmed(drive.serial, " ")}});
  }

 private:
  std::map<std::string, int> counts_;
};

// First the drives that were read, whose labels then do not depend on what could not be.
Devices DevicesOf(const Report& report) {
  DeviceLabels labels;
  Devices devices;
  for (const Drive& drive : report.drives) devices.read.push_back({&drive, labels.Next(drive)});
  for (const UnreadDrive& drive : report.notRead) devices.notRead.push_back(labels.Next(drive));
  return devices;
}

void AppendHead(std::string& text, std::string_view name, std::string_view help) {
  text.append("# HELP ").append(name).append(" ").append(help).append("\n");
  text.append("# TYPE ").append(name).append(" gauge\n");
}

void AppendSample(std::string& text, std::string_view name, std::string_view labels,
                  std::uint64_t value) {
  text.append(name).append("{").append(labels).append("} ");
  text.append(std::to_string(value)).append("\n");
}

void AppendCount(std::string& text, std::string_view name, std::string_view help,
                 std::size_t count) {
  AppendHead(text, name, help);
  text.append(name).append(" ").append(std::to_string(count)).append("\n");
}

void AppendInfo(std::string& text, const Devices& devices) {
  constexpr std::string_view kName = "smartprobe_drive_info";
  AppendHead(text, kName, "What the drive is; always 1.");
  for (const ReadDrive& each : devices.read) {
    const std::string more = Labels({{"revision", base::Trimmed(each.drive->revision, " ")},
                                     {"capacity", base::Trimmed(each.drive->capacity, " ")}});
    AppendSample(text, kName, Joined(each.labels, more), 1);
  }
}

void AppendReadFailed(std::string& text, const Devices& devices) {
  constexpr std::string_view kName = "smartprobe_drive_read_failed";
  AppendHead(text, kName, "Whether the drive could not be read.");
  for (const ReadDrive& each : devices.read) AppendSample(text, kName, each.labels, 0);
  for (const std::string& labels : devices.notRead) AppendSample(text, kName, labels, 1);
}

// Gives nullopt where it is not known.
template <typename Subject>
using ValueOf = std::optional<std::uint64_t> (*)(const Subject&);

void AppendDriveMetric(std::string& text, std::string_view name, std::string_view help,
                       const Devices& devices, ValueOf<Drive> valueOf) {
  AppendHead(text, name, help);
  for (const ReadDrive& each : devices.read) {
    if (const auto value = valueOf(*each.drive)) AppendSample(text, name, each.labels, *value);
  }
}

void AppendSectors(std::string& text, const Devices& devices) {
  constexpr std::string_view kName = "smartprobe_drive_sectors";
  AppendHead(text, kName, "How many sectors the drive has lost.");
  for (const ReadDrive& each : devices.read) {
    for (const auto& [state, count] : each.drive->sectors) {
      AppendSample(text, kName, Joined(each.labels, Labels({{"state", state}})), count);
    }
  }
}

// nullopt also for a clock that was set before that time.
std::optional<std::uint64_t> ReadTime(const Drive& drive) {
  const std::int64_t seconds = drive.date ? drive.date->time_since_epoch().count() : -1;
  return seconds < 0 ? std::nullopt : std::optional(static_cast<std::uint64_t>(seconds));
}

std::string LabelsOf(const ReadDrive& drive, const Attribute& attribute) {
  return Joined(drive.labels,
                Labels({{"id", std::to_string(attribute.id)},
                        {"name", NameText(attribute)},
                        {"kind", attribute.preFailure ? "pre-failure" : "life-span"}}));
}

// A series may be there only once: of the lines of one identifier the worst counts, of
// equal ones the first.
std::map<std::uint8_t, const Attribute*> ByIdentifier(const Drive& drive) {
  std::map<std::uint8_t, const Attribute*> attributes;
  for (const Attribute& attribute : drive.attributes) {
    const Attribute*& kept = attributes.try_emplace(attribute.id, &attribute).first->second;
    if (HealthOf(attribute) > HealthOf(*kept)) kept = &attribute;
  }
  return attributes;
}

void AppendAttributeMetric(std::string& text, std::string_view name, std::string_view help,
                           const Devices& devices, ValueOf<Attribute> valueOf) {
  AppendHead(text, name, help);
  for (const ReadDrive& each : devices.read) {
    for (const auto& [id, attribute] : ByIdentifier(*each.drive)) {
      const auto value = valueOf(*attribute);
      if (value) AppendSample(text, name, LabelsOf(each, *attribute), *value);
    }
  }
}

}  // namespace

std::string PrometheusText(const Report& report) {
  using Value = std::optional<std::uint64_t>;
  const Devices devices = DevicesOf(report);
  std::string text;
  AppendCount(text, "smartprobe_drives_read", "How many drives were read.", devices.read.size());
  AppendCount(text, "smartprobe_drives_not_read", "How many drives could not be read.",
              devices.notRead.size());
  if (report.notATA) {
    AppendCount(text, "smartprobe_disks_not_looked_at", "How many disks are not ATA disks.",
                report.notATA->size());
    AppendCount(text, "smartprobe_drives_without_smart",
                "How many drives have no S.M.A.R.T., or none that can be enabled.",
                report.withoutSMART.size());
  }
  AppendInfo(text, devices);
  AppendDriveMetric(text, "smartprobe_drive_threshold_exceeded",
                    "Whether the drive reports that a threshold is exceeded.", devices,
                    [](const Drive& drive) { return Value(drive.thresholdExceeded); });
  AppendDriveMetric(text, "smartprobe_drive_attributes", "How many attributes the drive has.",
                    devices, [](const Drive& drive) { return Value(drive.attributes.size()); });
  AppendDriveMetric(text, "smartprobe_drive_temperature_celsius", "The temperature of the drive.",
                    devices, [](const Drive& drive) { return Value(drive.temperature); });
  AppendDriveMetric(text, "smartprobe_drive_read_time_seconds",
                    "When the drive answered, in seconds since 1970.", devices, ReadTime);
  AppendSectors(text, devices);
  AppendReadFailed(text, devices);
  AppendAttributeMetric(text, "smartprobe_attribute_value",
                        "The normalized value of the attribute.", devices,
                        [](const Attribute& attribute) { return Value(attribute.value); });
  AppendAttributeMetric(text, "smartprobe_attribute_threshold",
                        "The threshold of the attribute's value.", devices,
                        [](const Attribute& attribute) { return Value(attribute.threshold); });
  AppendAttributeMetric(
      text, "smartprobe_attribute_reached",
      "Whether the attribute's value has reached its threshold.", devices,
      [](const Attribute& attribute) { return Value(HealthOf(attribute) != Health::kGood); });
  AppendAttributeMetric(text, "smartprobe_attribute_worst", "The least normalized value so far.",
                        devices, [](const Attribute& attribute) {
                          return attribute.counts ? Value(attribute.counts->worst) : std::nullopt;
                        });
  AppendAttributeMetric(text, "smartprobe_attribute_raw",
                        "The attribute's raw value, which is the maker's own.", devices,
                        [](const Attribute& attribute) {
                          return attribute.counts ? Value(attribute.counts->raw) : std::nullopt;
                        });
  return text;
}

}  // namespace report
