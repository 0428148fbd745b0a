#include "machines/linux/answer_bytes.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace machines {
namespace {

using platform::BlockAnswer;
using platform::DriveAnswers;

class Packing {
 public:
  void Number(std::uint64_t number) {
    bytes_.append(reinterpret_cast<const char*>(&number), sizeof number);
  }
  template <typename Bytes>
  void Text(const Bytes& text) {
    Number(text.size());
    bytes_.append(text.begin(), text.end());
  }
  void Block(const BlockAnswer& block) {
    Text(block.bytes);
    Number(block.succeeds ? 1 : 0);
  }
  std::string Bytes() && { return std::move(bytes_); }

 private:
  std::string bytes_;
};

// Each call throws std::out_of_range if the bytes end before that.
class Unpacking {
 public:
  explicit Unpacking(std::string_view bytes) : rest_(bytes) {}
  std::uint64_t Number() {
    std::uint64_t number = 0;
    std::memcpy(&number, Take(sizeof number).data(), sizeof number);
    return number;
  }
  template <typename Bytes>
  Bytes Text() {
    const std::string_view taken = Take(Number());
    return {taken.begin(), taken.end()};
  }
  BlockAnswer Block() {
    auto bytes = Text<platform::Data>();
    return {std::move(bytes), Number() != 0};
  }
  bool IsAtEnd() const { return rest_.empty(); }

 private:
  std::string_view Take(std::uint64_t size) {
    if (size > rest_.size()) throw std::out_of_range("cut short");
    const std::string_view taken = rest_.substr(0, static_cast<std::size_t>(size));
    rest_.remove_prefix(taken.size());
    return taken;
  }

  std::string_view rest_;
};

}  // namespace

std::string Packed(const DriveAnswers& answers) {
  Packing packing;
  packing.Text(answers.whyNotOpened);
  packing.Number(answers.enables ? 1 : 0);
  packing.Number(answers.exceeded ? 1 : 0);
  packing.Number(answers.exceeded.value_or(false) ? 1 : 0);
  packing.Block(answers.data);
  packing.Block(answers.thresholds);
  packing.Block(answers.identify);
  packing.Number(answers.date ? 1 : 0);
  const auto date = answers.date.value_or(std::chrono::sys_seconds());
  packing.Number(static_cast<std::uint64_t>(date.time_since_epoch().count()));
  packing.Text(answers.whyNoLogs);
  packing.Number(answers.logs.size());
  for (const auto& [name, bytes] : answers.logs) {
    packing.Text(name);
    packing.Text(bytes);
  }
  return std::move(packing).Bytes();
}

std::optional<DriveAnswers> Unpacked(std::string_view bytes) try {
  Unpacking unpacking(bytes);
  DriveAnswers answers;
  answers.whyNotOpened = unpacking.Text<std::string>();
  answers.enables = unpacking.Number() != 0;
  const bool hasExceeded = unpacking.Number() != 0;
  const bool isExceeded = unpacking.Number() != 0;
  if (hasExceeded) answers.exceeded = isExceeded;
  answers.data = unpacking.Block();
  answers.thresholds = unpacking.Block();
  answers.identify = unpacking.Block();
  const bool hasDate = unpacking.Number() != 0;
  const std::chrono::seconds date(static_cast<std::int64_t>(unpacking.Number()));
  if (hasDate) answers.date = std::chrono::sys_seconds(date);
  answers.whyNoLogs = unpacking.Text<std::string>();
  for (std::uint64_t logs = unpacking.Number(); logs > 0; logs--) {
    auto name = unpacking.Text<std::string>();
    answers.logs.emplace(std::move(name), unpacking.Text<platform::Data>());
  }
  return unpacking.IsAtEnd() ? std::optional(std::move(answers)) : std::nullopt;
} catch (const std::out_of_range&) {
  return std::nullopt;
}

}  // namespace machines
