#include "machines/recorded/mask_serials.h"

#include <algorithm>
#include <cctype>
#include <functional>
#include <string>
#include <string_view>

#include "base/block.h"
#include "drives/identify_data.h"
#include "drives/nvme_logs.h"
#include "machines/entries/device_entries.h"
#include "machines/entries/drive_logs.h"
#include "machines/recorded/recording_format.h"

namespace machines {
namespace {

using platform::Array;
using platform::Data;
using platform::Dictionary;
using platform::Property;

// Whether the key names a serial number, as "Serial Number", "serial-number" and
// "IOPlatformSerialNumber" do.
bool NamesSerialNumber(std::string key) {
  std::erase_if(key, [](unsigned char c) { return std::isalpha(c) == 0; });
  std::ranges::transform(key, key.begin(), [](unsigned char c) { return std::tolower(c); });
  return key.find("serialnumber") != std::string::npos;
}

bool IsPadding(std::uint8_t byte) { return byte == ' ' || byte == 0; }

// One X for each character of UTF-8, which may take several bytes.
std::string Masked(const std::string& text) {
  std::string masked;
  for (const char c : text) {
    const auto byte = static_cast<std::uint8_t>(c);
    if ((byte & 0xC0) == 0x80) continue;
    masked += IsPadding(byte) ? c : 'X';
  }
  return masked;
}

void MaskBlock(Dictionary& recorded, std::string_view key, void (*mask)(base::Block&)) {
  const auto found = recorded.find(key);
  if (found == recorded.end()) return;
  auto& bytes = std::get<Data>(found->second.value);
  base::Block block{};
  std::copy_n(bytes.begin(), std::min(bytes.size(), block.size()), block.begin());
  mask(block);
  bytes.assign(block.begin(), block.end());
}

// A number becomes 0; what holds several values has each of them masked.
void MaskSerialNumber(Property& property) {
  if (std::holds_alternative<platform::Number>(property.value)) property = {platform::Number()};
  if (auto* items = std::get_if<Array>(&property.value)) {
    std::ranges::for_each(*items, MaskSerialNumber);
  }
  if (auto* pairs = std::get_if<Dictionary>(&property.value)) {
    for (auto& [key, value] : *pairs) MaskSerialNumber(value);
  }
  if (auto* text = std::get_if<std::string>(&property.value)) *text = Masked(*text);
  if (auto* bytes = std::get_if<Data>(&property.value)) {
    std::ranges::replace_if(*bytes, std::not_fn(IsPadding), 'X');
  }
}

// The recorder keeps no names there, but a file may have them.
void MaskEarlier(Array& earlier) {
  for (Property& item : earlier) {
    auto& recorded = std::get<Dictionary>(item.value);
    MaskBlock(recorded, kIdentifyKey, drives::MaskIdentity);
    MaskBlock(recorded, kIdentifyController, drives::MaskController);
  }
}

}  // namespace

void MaskSerials(Property& listing) {
  if (auto* array = std::get_if<Array>(&listing.value)) {
    for (Property& item : *array) MaskSerials(item);
  }
  auto* dictionary = std::get_if<Dictionary>(&listing.value);
  if (dictionary == nullptr) return;
  for (auto& [key, property] : *dictionary) {
    if (key == kDriveKey) {
      auto& recorded = std::get<Dictionary>(property.value);
      MaskBlock(recorded, kIdentifyKey, drives::MaskIdentity);
      MaskBlock(recorded, kIdentifyController, drives::MaskController);
      const auto earlier = recorded.find(kEarlierKey);
      if (earlier != recorded.end()) MaskEarlier(std::get<Array>(earlier->second.value));
    } else if (key == kHostKey) {
      auto& host = std::get<Dictionary>(property.value);
      if (const auto name = host.find(kHostNameKey); name != host.end()) {
        MaskSerialNumber(name->second);
      }
    } else if (NamesSerialNumber(key)) {
      MaskSerialNumber(property);
    } else {
      MaskSerials(property);
    }
  }
}

}  // namespace machines
