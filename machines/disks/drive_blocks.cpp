#include "machines/disks/drive_blocks.h"

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

// Of the two characters in a word the first is the high byte.
std::string FieldText(const Block& identify, const Field& field) {
  std::string text;
  for (std::size_t i = 0; i < field.size; i++) {
    text += static_cast<char>(identify[field.offset + (i ^ 1)]);
  }
  return base::PrintableASCII(text);
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

std::string ModelNumber(const Block& identify) { return FieldText(identify, kModel); }

std::string SerialNumber(const Block& identify) { return FieldText(identify, kSerialNumber); }

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

// An entry of the data: identifier, two bytes of flags, normalized value, worst value, six bytes
// of the raw value. Gives the first whose normalized value is at least `least`.
std::optional<Entry> FindAttribute(const Block& data, std::uint8_t identifier, int least) {
  for (std::size_t i = 0; i < kEntries; i++) {
    const Entry attribute = EntryOf(data, i);
    if (attribute[0] == identifier && attribute[3] >= least) return attribute;
  }
  return std::nullopt;
}

}  // namespace

std::optional<AttributeCounts> FindCounts(const Block& data, std::uint8_t identifier) {
  std::optional<Entry> attribute = FindAttribute(data, identifier, 1);
  if (!attribute) attribute = FindAttribute(data, identifier, 0);
  if (!attribute) return std::nullopt;
  AttributeCounts counts = {.worst = (*attribute)[4]};
  for (std::size_t i = 10; i >= 5; i--) counts.raw = counts.raw << 8 | (*attribute)[i];
  return counts;
}

std::optional<bool> ExceededCondition(const Block& data, const Block& thresholds) {
  constexpr std::uint8_t kPreFailure = 0x01;
  std::optional<bool> exceeded;
  for (std::size_t i = 0; i < kEntries; i++) {
    const Entry threshold = EntryOf(thresholds, i);
    if (threshold[0] == 0) continue;
    const std::optional<Entry> attribute = FindAttribute(data, threshold[0], 1);
    if (!attribute) continue;
    const bool isReached = (*attribute)[3] <= threshold[1];
    exceeded = exceeded.value_or(false) || (isReached && ((*attribute)[1] & kPreFailure) != 0);
  }
  return exceeded;
}

}  // namespace machines
