// The report as one JSON document, written a drive at a time.
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "report/form.h"

namespace report {
namespace {

using Json = nlohmann::ordered_json;

// The flags word with its bytes in the order of the drive's standard.
unsigned AtaFlags(std::uint16_t flags) { return (flags & 0xFFU) << 8U | flags >> 8U; }

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
  auto& attributes = object["attributes"].get_ref<Json::array_t&>();
  attributes.resize(drive.attributes.size());
  for (std::size_t i = 0; i < attributes.size(); ++i) Set(attributes[i], drive.attributes[i]);
}

class JsonForm : public Form {
 public:
  explicit JsonForm(std::string& text) : text_(text) {}

  void OnDrive(const Drive& drive) override {
    text_ += hasDrives_ ? "," : kStart;
    Set(drive_, drive);
    text_ += "\n" + drive_.dump();
    hasDrives_ = true;
  }

  void OnFailed(const std::string& device) override { failed_.push_back(device); }

  void Finish() override {
    text_ += hasDrives_ ? "\n" : kStart;
    text_ += "],\"failed\":" + Json(failed_).dump() + "}\n";
  }

 private:
  static constexpr const char* kStart = "{\"drives\":[";

  std::string& text_;
  // One for all drives: to make its keys anew for each takes longer than to write them.
  Json drive_ = {{"device", {}},
                 {"product", {}},
                 {"revision", {}},
                 {"capacity", {}},
                 {"serial", {}},
                 {"threshold_exceeded", {}},
                 {"attributes", Json::array()}};
  bool hasDrives_ = false;
  std::vector<std::string> failed_;
};

}  // namespace

std::unique_ptr<Form> MakeJson(std::string& text) { return std::make_unique<JsonForm>(text); }

}  // namespace report
