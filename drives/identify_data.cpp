#include "drives/identify_data.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <span>

#include "base/printable_text.h"

namespace drives {
namespace {

using base::Block;

// Words, counted from 0.
struct Words {
  std::size_t first, count;
};
constexpr Words kSerialNumber = {10, 10};
constexpr Words kRevision = {23, 4};
constexpr Words kModel = {27, 20};
constexpr std::array kTellTale{Words{108, 8},    // world wide name, and room for more of it
                               Words{129, 31},   // vendor specific
                               Words{176, 30}};  // serial number of the medium

std::span<std::uint8_t> BytesOf(Block& identify, const Words& words) {
  return std::span(identify).subspan(2 * words.first, 2 * words.count);
}

std::span<const std::uint8_t> BytesOf(const Block& identify, const Words& words) {
  return std::span(identify).subspan(2 * words.first, 2 * words.count);
}

std::uint16_t Word(const Block& identify, std::size_t index) {
  return static_cast<std::uint16_t>(identify[2 * index] | identify[2 * index + 1] << 8);
}

// Of the two characters in a word the first is the high byte.
std::string Text(const Block& identify, const Words& words) {
  const auto bytes = BytesOf(identify, words);
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i++) text += static_cast<char>(bytes[i ^ 1]);
  return base::PrintableASCII(text);
}

std::uint8_t Sum(const Block& block) {
  return static_cast<std::uint8_t>(std::accumulate(block.begin(), block.end(), 0U));
}

// Whether a bit of the words 84 and 87 is set, in one of them that is valid.
bool HasFeature(const Block& identify, std::uint16_t feature) {
  const auto says = [feature](std::uint16_t word) {
    return word >> 14 == 0b01 && (word & feature) != 0;
  };
  return says(Word(identify, 84)) || says(Word(identify, 87));
}

std::string_view FormFactor(std::uint16_t word) {
  constexpr std::array<std::string_view, 10> kFormFactors = {
      "",      "5.25 inch", "3.5 inch", "2.5 inch", "1.8 inch", "less than 1.8 inch",
      "mSATA", "M.2",       "MicroSSD", "CFast"};
  const std::size_t code = word & 0x000F;
  return word >> 4 == 0 && code < kFormFactors.size() ? kFormFactors.at(code) : "";
}

// The speed of now, or else the highest that the drive has. Words of a parallel link are none of
// these.
std::string_view LinkSpeed(const Block& identify) {
  constexpr std::array<std::string_view, 4> kSpeeds = {"", "1.5 Gb/s", "3.0 Gb/s", "6.0 Gb/s"};
  constexpr std::array<std::string_view, 4> kMost = {"", "up to 1.5 Gb/s", "up to 3.0 Gb/s",
                                                     "up to 6.0 Gb/s"};
  const std::uint16_t transport = Word(identify, 222);
  const bool isParallel = transport != 0 && transport != 0xFFFF && transport >> 12 == 0;
  const std::uint16_t supported = Word(identify, 76);
  if (isParallel || supported == 0xFFFF || (supported & 0x0001) != 0) return "";
  const std::size_t current = Word(identify, 77) >> 1 & 0x7;
  if (current != 0 && current < kSpeeds.size()) return kSpeeds.at(current);
  std::size_t most = kMost.size() - 1;
  while (most > 0 && (supported >> most & 1) == 0) most--;
  return kMost.at(most);
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

std::string ModelNumber(const Block& identify) { return Text(identify, kModel); }

std::string SerialNumber(const Block& identify) { return Text(identify, kSerialNumber); }

// Word 82 means something only where word 83 says that it does.
bool LacksSMART(const Block& identify) {
  const bool isValid = Word(identify, 83) >> 14 == 0b01;
  return isValid && (Word(identify, 82) & 0x0001) == 0;
}

bool HasSelfTests(const Block& identify) { return HasFeature(identify, 0x0002); }
bool HasLogs(const Block& identify) { return HasFeature(identify, 0x0020); }

std::uint32_t LogicalSectorSize(const Block& identify) {
  constexpr std::uint32_t kUsual = 512;
  const std::uint16_t sizes = Word(identify, 106);
  const bool isOther = sizes >> 14 == 0b01 && (sizes & 0x1000) != 0;
  const std::uint32_t words = Word(identify, 117) | std::uint32_t{Word(identify, 118)} << 16;
  return isOther && words >= kUsual / 2 && words <= 0xFFFF ? words * 2 : kUsual;
}

void MakePrintable(Block& identify) {
  const auto isOdd = [](std::uint8_t byte) { return byte != 0 && (byte < 0x20 || byte > 0x7E); };
  for (const Words& words : {kSerialNumber, kRevision}) {
    std::ranges::replace_if(BytesOf(identify, words), isOdd, '?');
  }
}

std::string Identity(Block identify) {
  MakePrintable(identify);
  if (SerialNumber(identify).empty()) return "";
  std::string identity;
  for (const Words& words : {kModel, kSerialNumber}) {
    const auto bytes = BytesOf(identify, words);
    identity.append(bytes.begin(), bytes.end());
  }
  return identity;
}

void AddIdentify(RecordedFacts& facts, const Block& identify) {
  const std::uint16_t rate = Word(identify, 217);
  if (rate == 0x0001) facts.rotationRate = 0;
  if (rate >= 0x0401 && rate <= 0xFFFE) facts.rotationRate = rate;
  facts.formFactor = FormFactor(Word(identify, 168));
  facts.linkSpeed = LinkSpeed(identify);
}

void MaskIdentity(Block& identify) {
  constexpr std::uint8_t kSignature = 0xA5;  // before a checksum
  const bool hasChecksum = identify[510] == kSignature && Sum(identify) == 0;
  const auto isCharacter = [](std::uint8_t byte) { return byte != ' ' && byte != 0; };
  std::ranges::replace_if(BytesOf(identify, kSerialNumber), isCharacter, 'X');
  for (const Words& words : kTellTale) std::ranges::fill(BytesOf(identify, words), 0);
  if (!hasChecksum) return;
  identify[511] = 0;
  identify[511] = static_cast<std::uint8_t>(-Sum(identify));
}

}  // namespace drives
