#include "machines/device_entries.h"

#include <variant>

namespace machines {
namespace {

// The medium's name in the entry, or in the first entry below it that has one. Null if none has.
const std::string* FindMediumName(const platform::Entry& entry) {
  const std::string* name = platform::FindText(entry.properties, kDiskNameKey);
  for (auto child = entry.children.begin(); !name && child != entry.children.end(); ++child) {
    name = FindMediumName(*child);
  }
  return name;
}

}  // namespace

std::string DiskName(const platform::Entry& device) {
  if (const std::string* name = FindMediumName(device)) return *name;
  const std::string product = Characteristic(device, kProductNameKey);
  return product.empty() ? device.name : product;
}

std::string Characteristic(const platform::Entry& device, std::string_view key) {
  const platform::Property* found = platform::Find(device.properties, kCharacteristicsKey);
  const auto* all = found ? std::get_if<platform::Dictionary>(&found->value) : nullptr;
  const std::string* text = all ? platform::FindText(*all, key) : nullptr;
  return text ? *text : std::string();
}

}  // namespace machines
