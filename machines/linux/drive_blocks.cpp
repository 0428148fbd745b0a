#include "machines/linux/drive_blocks.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

#include "base/printable_text.h"

namespace machines {
namespace {

using platform::Block;

struct Field {
  std::size_t offset, size;
};
constexpr Field kSerialNumber = {20, 20};
constexpr Field kRevision = {46, 8};
constexpr Field kModel = {54, 40};

std::uint16_t Word(const Block& identify, std::size_t index) {
  return static_cast<std::uint16_t>(identify[2 * index] | identify[2 * index + 1] << 8);
}

}  // namespace

std::optional<Block> FindIdentifyData(std::string_view page) {
  constexpr std::size_t kPageCodeOffset = 1;
  constexpr char kAtaInformation = '\x89';
  constexpr std::size_t kCommandOffset = 56;  // the command that the data answer
  constexpr char kIdentifyDevice = '\xEC';
  constexpr std::size_t kDataOffset = 60;
  Block identify;
  if (page.size() < kDataOffset + identify.size()) return std::nullopt;
  if (page[kPageCodeOffset] != kAtaInformation) return std::nullopt;
  if (page[kCommandOffset] != kIdentifyDevice) return std::nullopt;
  std::ranges::copy(page.substr(kDataOffset, identify.size()), identify.begin());
  if (identify == Block{}) return std::nullopt;
  return identify;
}

// Of the two characters in a word the first is the high byte.
std::string ModelNumber(const Block& identify) {
  std::string model;
  for (std::size_t index = 27; index <= 46; index++) {
    const std::uint16_t word = Word(identify, index);
    model += static_cast<char>(word >> 8);
    model += static_cast<char>(word & 0xFF);
  }
  return base::PrintableASCII(model);
}

// Word 82 means something only where word 83 says that it does.
bool LacksSMART(const Block& identify) {
  const bool isValid = Word(identify, 83) >> 14 == 0b01;
  return isValid && (Word(identify, 82) & 0x0001) == 0;
}

void MakePrintable(Block& identify) {
  const auto isOdd = [](std::uint8_t byte) { return byte != 0 && (byte < 0x20 || byte > 0x7E); };
  for (const auto& [offset, size] : {kSerialNumber, kRevision}) {
    const auto field = std::span(identify).subspan(offset, size);
    std::ranges::replace_if(field, isOdd, '?');
  }
}

std::string Identity(Block identify) {
  MakePrintable(identify);
  const auto text = [&identify](const Field& field) {
    const auto bytes = std::span(identify).subspan(field.offset, field.size);
    return std::string(bytes.begin(), bytes.end());
  };
  const std::string serial = text(kSerialNumber);
  return base::PrintableASCII(serial).empty() ? "" : text(kModel) + serial;
}

namespace {

using Entry = std::span<const std::uint8_t, 12>;

constexpr std::size_t kEntries = 30;
constexpr std::size_t kFirstEntry = 2;

Entry EntryOf(const Block& block, std::size_t index) {
  return Entry(block.data() + kFirstEntry + index * Entry::extent, Entry::extent);
}

// An entry of the data: identifier, two bytes of flags, normalized value.
std::optional<Entry> FindWithValue(const Block& data, std::uint8_t identifier) {
  for (std::size_t i = 0; i < kEntries; i++) {
    const Entry attribute = EntryOf(data, i);
    if (attribute[0] == identifier && attribute[3] != 0) return attribute;
  }
  return std::nullopt;
}

}  // namespace

std::optional<bool> ExceededCondition(const Block& data, const Block& thresholds) {
  constexpr std::uint8_t kPreFailure = 0x01;
  std::optional<bool> exceeded;
  for (std::size_t i = 0; i < kEntries; i++) {
    const Entry threshold = EntryOf(thresholds, i);
    if (threshold[0] == 0) continue;
    const std::optional<Entry> attribute = FindWithValue(data, threshold[0]);
    if (!attribute) continue;
    const bool isReached = (*attribute)[3] <= threshold[1];
    exceeded = exceeded.value_or(false) || (isReached && ((*attribute)[1] & kPreFailure) != 0);
  }
  return exceeded;
}

}  // namespace machines
