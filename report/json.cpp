// The report as one JSON document.
#include <nlohmann/json.hpp>

#include "report/forms.h"

namespace report {
namespace {

using Json = nlohmann::ordered_json;

// In ASCII, whatever the texts are: every other character is escaped, and so comes through any
// channel as it was.
std::string Dump(const Json& value) { return value.dump(-1, ' ', true); }

// The flags word with its bytes in the order of the drive's standard.
unsigned AtaFlags(std::uint16_t flags) { return (flags & 0xFFU) << 8U | flags >> 8U; }

// `object` is one already: a null that becomes one while memory runs out cannot be destroyed.
void Set(Json& object, const Attribute& attribute) {
  object["id"] = attribute.id;
  object["name"] = attribute.name;
  object["flags"] = attribute.flags;
  object["flags_ata"] = AtaFlags(attribute.flags);
  object["value"] = attribute.value;
  object["threshold"] = attribute.threshold;
  object["valid"] = attribute.valid;
  object["pre_failure"] = attribute.preFailure;
  object["reached"] = attribute.reached;
  if (!attribute.counts) return;
  object["worst"] = attribute.counts->worst;
  object["raw"] = attribute.counts->raw;
}

void Set(Json& object, const Drive& drive) {
  object.clear();
  object["device"] = drive.device;
  object["product"] = drive.product;
  object["revision"] = drive.revision;
  object["capacity"] = drive.capacity;
  object["serial"] = drive.serial;
  object["threshold_exceeded"] = drive.thresholdExceeded;
  if (drive.temperature) object["temperature_celsius"] = *drive.temperature;
  for (const auto& [state, count] : drive.sectors) object[std::string(state) + "_sectors"] = count;
  if (drive.date) object["unix_time"] = drive.date->time_since_epoch().count();
  object["attributes"] = Json::array();
  for (const Attribute& attribute : drive.attributes)
    Set(object["attributes"].emplace_back(Json::object()), attribute);
}

void Set(Json& object, const UnreadDrive& drive) {
  object["device"] = drive.device;
  object["product"] = drive.product;
  object["serial"] = drive.serial;
}

// What a recording alone tells of disks that were not read.
std::string DisksText(const Report& report) {
  if (!report.notATA) return "";
  Json drives = Json::array();
  for (const UnreadDrive& drive : report.notRead) Set(drives.emplace_back(Json::object()), drive);
  return ",\"not_read_drives\":" + Dump(drives) +
         ",\"without_smart\":" + Dump(report.withoutSMART) + ",\"not_ata\":" + Dump(*report.notATA);
}

}  // namespace

std::string JsonText(const Report& report) {
  std::string text = "{\"drives\":[";
  Json object = Json::object();
  for (const Drive& drive : report.drives) {
    if (&drive != &report.drives.front()) text += ',';
    Set(object, drive);
    text.append("\n").append(Dump(object));
  }
  if (!report.drives.empty()) text += '\n';
  Json paths = Json::array();
  for (const UnreadDrive& drive : report.notRead) paths.push_back(drive.device);
  return text + "],\"not_read\":" + Dump(paths) + DisksText(report) + "}\n";
}

}  // namespace report
