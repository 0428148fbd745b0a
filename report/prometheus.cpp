// The report in the text format of Prometheus, for a textfile collector: one metric after
// the other, since the samples of each have to stand together.
#include <utf8.h>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <string_view>
#include <vector>

#include "base/printable_text.h"
#include "report/forms.h"
#include "report/health.h"

namespace report {
namespace {

// In characters. A label stands on many series, which a long one would blow up.
constexpr std::ptrdiff_t kMaxLabel = 64;

struct Label {
  std::string_view name;
  std::string_view value;
};

// `text`, or the start of one that is too long and an ellipsis.
std::string Shortened(const std::string& text) {
  if (utf8::unchecked::distance(text.begin(), text.end()) <= kMaxLabel) return text;
  auto end = text.begin();
  utf8::unchecked::advance(end, kMaxLabel - 1);
  return std::string(text.begin(), end) + "\u2026";
}

std::string Labels(std::initializer_list<Label> labels) {
  std::string text;
  for (const Label& label : labels) {
    if (!text.empty()) text += ',';
    text.append(label.name).append("=\"");
    for (const char c : Shortened(base::OneLine(label.value))) {
      if (c == '\\' || c == '"') text += '\\';
      text += c;
    }
    text += '"';
  }
  return text;
}

struct ReadDrive {
  const Drive* drive;
  std::string labels;
};

struct Devices {
  std::vector<ReadDrive> read;
  std::vector<std::string> notRead;  // their labels
};

// Numbers the devices of one path, so that no series is there twice: first the drives that
// were read, whose labels then do not depend on what could not be.
Devices DevicesOf(const Report& report) {
  std::map<std::string, std::size_t> counts;
  const auto numbered = [&counts](std::string_view device) {
    const std::string path = Labels({{"device", device}});
    return Labels({{"drive", std::to_string(counts[path]++)}}) + "," + path;
  };
  Devices devices;
  for (const Drive& drive : report.drives) {
    const std::string names = Labels({{"product", base::Trimmed(drive.product, " ")},
                                      {"serial", base::Trimmed(drive.serial, " ")}});
    devices.read.push_back({&drive, numbered(drive.device) + "," + names});
  }
  for (const std::string& device : report.notRead) devices.notRead.push_back(numbered(device));
  return devices;
}

void AppendHead(std::string& text, std::string_view name, std::string_view help) {
  text.append("# HELP ").append(name).append(" ").append(help).append("\n");
  text.append("# TYPE ").append(name).append(" gauge\n");
}

void AppendSample(std::string& text, std::string_view name, std::string_view labels,
                  std::size_t value) {
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
    const std::string more =
        Labels({{"revision", each.drive->revision}, {"capacity", each.drive->capacity}});
    AppendSample(text, kName, each.labels + "," + more, 1);
  }
}

void AppendReadFailed(std::string& text, const Devices& devices) {
  constexpr std::string_view kName = "smartprobe_drive_read_failed";
  AppendHead(text, kName, "Whether the drive could not be read.");
  for (const ReadDrive& each : devices.read) AppendSample(text, kName, each.labels, 0);
  for (const std::string& labels : devices.notRead) AppendSample(text, kName, labels, 1);
}

void AppendDriveMetric(std::string& text, std::string_view name, std::string_view help,
                       const Devices& devices, std::size_t (*valueOf)(const Drive&)) {
  AppendHead(text, name, help);
  for (const ReadDrive& each : devices.read) {
    AppendSample(text, name, each.labels, valueOf(*each.drive));
  }
}

std::string LabelsOf(const ReadDrive& drive, const Attribute& attribute) {
  return drive.labels + "," +
         Labels({{"id", std::to_string(attribute.id)},
                 {"name", attribute.name},
                 {"kind", attribute.preFailure ? "pre-failure" : "life-span"}});
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
                           const Devices& devices, std::size_t (*valueOf)(const Attribute&)) {
  AppendHead(text, name, help);
  for (const ReadDrive& each : devices.read) {
    for (const auto& [id, attribute] : ByIdentifier(*each.drive)) {
      AppendSample(text, name, LabelsOf(each, *attribute), valueOf(*attribute));
    }
  }
}

}  // namespace

std::string PrometheusText(const Report& report) {
  const Devices devices = DevicesOf(report);
  std::string text;
  AppendCount(text, "smartprobe_drives_read", "How many drives were read.", devices.read.size());
  AppendCount(text, "smartprobe_drives_not_read", "How many drives could not be read.",
              devices.notRead.size());
  AppendInfo(text, devices);
  AppendDriveMetric(text, "smartprobe_drive_threshold_exceeded",
                    "Whether the drive reports that a threshold is exceeded.", devices,
                    [](const Drive& drive) { return std::size_t{drive.thresholdExceeded}; });
  AppendDriveMetric(text, "smartprobe_drive_attributes", "How many attributes the drive has.",
                    devices, [](const Drive& drive) { return drive.attributes.size(); });
  AppendReadFailed(text, devices);
  AppendAttributeMetric(text, "smartprobe_attribute_value",
                        "The normalized value of the attribute.", devices,
                        [](const Attribute& attribute) { return std::size_t{attribute.value}; });
  AppendAttributeMetric(
      text, "smartprobe_attribute_threshold", "The threshold of the attribute's value.", devices,
      [](const Attribute& attribute) { return std::size_t{attribute.threshold}; });
  AppendAttributeMetric(text, "smartprobe_attribute_reached",
                        "Whether the attribute's value has reached its threshold.", devices,
                        [](const Attribute& attribute) { return std::size_t{attribute.reached}; });
  return text;
}

}  // namespace report
