#include "tools/mask_serials.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <functional>
#include <numeric>
#include <string>

#include "machines/recorded/recording_format.h"

namespace tools {
namespace {

using platform::Array;
using platform::Data;
using platform::Dictionary;
using platform::Property;

constexpr std::size_t kIdentifySize = platform::kBlockSize;
constexpr std::uint8_t kChecksumSignature = 0xA5;

// Words of IDENTIFY DEVICE data, both ends included.
struct Words {
  std::size_t first, last;
};
constexpr Words kSerialNumber = {10, 19};
constexpr std::array kZeroed = {Words{108, 115},   // world wide name, and room for more of it
                                Words{129, 159},   // vendor specific
                                Words{176, 205}};  // media serial number

// "Serial Number", "serial-number", "IOPlatformSerialNumber".
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

void MaskBytes(Data::iterator begin, Data::iterator end) {
  std::replace_if(begin, end, std::not_fn(IsPadding), 'X');
}

// The low byte of the sum.
std::uint8_t Sum(const Data& bytes) {
  return static_cast<std::uint8_t>(std::accumulate(bytes.begin(), bytes.end(), 0U));
}

void MaskIdentify(Data& identify) {
  if (identify.size() != kIdentifySize) identify.resize(kIdentifySize);
  const bool hasChecksum = identify[510] == kChecksumSignature && Sum(identify) == 0;
  const auto at = [&](std::size_t word) {
    return identify.begin() + static_cast<std::ptrdiff_t>(2 * word);
  };
  MaskBytes(at(kSerialNumber.first), at(kSerialNumber.last + 1));
  for (const Words& words : kZeroed) std::fill(at(words.first), at(words.last + 1), 0);
  if (!hasChecksum) return;
  identify[511] = 0;
  identify[511] = static_cast<std::uint8_t>(-Sum(identify));
}

void MaskSerialNumber(Property& property) {
  if (auto* text = std::get_if<std::string>(&property.value)) *text = Masked(*text);
  if (auto* bytes = std::get_if<Data>(&property.value)) MaskBytes(bytes->begin(), bytes->end());
}

}  // namespace

void MaskSerials(Property& listing) {
  if (auto* array = std::get_if<Array>(&listing.value)) {
    for (Property& item : *array) MaskSerials(item);
  }
  auto* dictionary = std::get_if<Dictionary>(&listing.value);
  if (dictionary == nullptr) return;
  for (auto& [key, property] : *dictionary) {
    if (key == machines::kDriveKey) {
      auto& recorded = std::get<Dictionary>(property.value);
      const auto identify = recorded.find(machines::kIdentifyKey);
      if (identify != recorded.end()) MaskIdentify(std::get<Data>(identify->second.value));
    } else if (NamesSerialNumber(key)) {
      MaskSerialNumber(property);
    } else {
      MaskSerials(property);
    }
  }
}

}  // namespace tools
