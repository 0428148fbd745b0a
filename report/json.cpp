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
}

void Set(Json& object, const Drive& drive) {
  object["device"] = drive.device;
  object["product"] = drive.product;
  object["revision"] = drive.revision;
  object["capacity"] = drive.capacity;
  object["serial"] = drive.serial;
  object["threshold_exceeded"] = drive.thresholdExceeded;
  object["attributes"] = Json::array();
  for (const Attribute& attribute : drive.attributes)
    Set(object["attributes"].emplace_back(Json::object()), attribute);
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
  return text + "],\"not_read\":" + Dump(report.notRead) + "}\n";
}

}  // namespace report
