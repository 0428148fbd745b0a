#include "views/metric_labels.h"

#include <fmt/format.h>

#include <cstdint>
#include <map>

#include "base/printable_text.h"
#include "health/health.h"

namespace views {
namespace {

using drives::Attribute;
using drives::Drive;
using drives::Host;

// Gives the labels of one device after the other, and numbers all but the first of one path, so
// that no series occurs twice.
class DeviceLabels {
 public:
  template <typename AnyDrive>  // Drive or UnreadDrive
  std::string Next(const AnyDrive& drive) {
    const int number = counts_[Labels({{"device", drive.device}})]++;
    return Labels({{"device", drive.device},
                   {"disk", drives::DiskOf(drive)},
                   {"drive", number == 0 ? "" : std::to_string(number)},
                   {"product", base::Trimmed(drive.product, " ")},
                   {"serial", base::Trimmed(drive.serial, " ")}});
  }

 private:
  std::map<std::string, int> counts_;
};

// A series may occur only once: of the lines of one identifier the worst counts, of
// equal ones the first.
std::map<std::uint8_t, const Attribute*> ByIdentifier(const Drive& drive) {
  std::map<std::uint8_t, const Attribute*> attributes;
  for (const Attribute& attribute : drive.attributes) {
    const Attribute*& kept = attributes.try_emplace(attribute.id, &attribute).first->second;
    if (health::GradeOf(attribute) > health::GradeOf(*kept)) kept = &attribute;
  }
  return attributes;
}

void AddDrive(Devices& devices, const Drive& drive, const std::string& labels) {
  devices.read.push_back({&drive, labels});
  for (const auto& [id, attribute] : ByIdentifier(drive)) {
    const std::string own = Labels({{"id", std::to_string(id)},
                                    {"name", health::NameText(*attribute)},
                                    {"kind", attribute->preFailure ? "pre-failure" : "life-span"}});
    devices.attributes.push_back({attribute, JoinedLabels(labels, own)});
  }
}

}  // namespace

std::string Labels(std::initializer_list<Label> labels) {
  constexpr std::size_t kMaxCharacters = 64;
  std::string text;
  for (const Label& label : labels) {
    if (label.value.empty()) continue;
    text.append(text.empty() ? "" : ",").append(label.name).append("=\"");
    for (const char c : base::Shortened(base::OneLine(label.value), kMaxCharacters)) {
      if (c == '\\' || c == '"') text += '\\';
      text += c;
    }
    text += '"';
  }
  return text;
}

std::string JoinedLabels(std::string_view ones, std::string_view others) {
  return fmt::format("{}{}{}", ones, ones.empty() || others.empty() ? "" : ",", others);
}

// First the drives that were read, whose labels then do not depend on what could not be.
Devices DevicesOf(const Host& host) {
  DeviceLabels labels;
  Devices devices;
  for (const Drive& drive : host.drives) AddDrive(devices, drive, labels.Next(drive));
  for (const drives::UnreadDrive& drive : host.notRead) {
    devices.notRead.push_back(labels.Next(drive));
  }
  for (const drives::GoneDrive& gone : host.gone) devices.gone.push_back(labels.Next(gone.names));
  return devices;
}

}  // namespace views
