#include "machines/entries/device_entries.h"

#include <variant>

namespace machines {
namespace {

// The property of the entry, or of the first entry below it that has one; null if none has.
const platform::Property* FindBelow(const platform::Entry& entry, std::string_view key) {
  const platform::Property* found = platform::Find(entry.properties, key);
  for (auto child = entry.children.begin(); !found && child != entry.children.end(); ++child) {
    found = FindBelow(*child, key);
  }
  return found;
}

}  // namespace

std::optional<std::int64_t> MediumSize(const platform::Entry& device) {
  const platform::Property* found = FindBelow(device, kSizeKey);
  const auto* size = found ? std::get_if<platform::Number>(&found->value) : nullptr;
  if (!size || size->type == kCFNumberFloat64Type) return std::nullopt;
  const auto bytes = static_cast<std::int64_t>(size->bits);
  return bytes > 0 ? std::optional(bytes) : std::nullopt;
}

std::string_view DiskName(const platform::Entry& device) {
  const platform::Property* found = FindBelow(device, kDiskNameKey);
  const auto* name = found ? std::get_if<std::string>(&found->value) : nullptr;
  if (name) return *name;
  const std::string_view product = Characteristic(device, kProductNameKey);
  return product.empty() ? device.name : product;
}

std::string IdentityOf(std::string_view product, std::string_view serial) {
  if (serial.empty()) return "";
  return std::string(product).append("\n").append(serial);
}

std::string_view Characteristic(const platform::Entry& device, std::string_view key) {
  const auto* all =
      platform::FindValue<platform::Dictionary>(device.properties, kCharacteristicsKey);
  const std::string* text = all ? platform::FindText(*all, key) : nullptr;
  return text ? std::string_view(*text) : std::string_view();
}

}  // namespace machines
