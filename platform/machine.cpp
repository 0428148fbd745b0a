#include "platform/machine.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <utility>

#include "platform/ledger.h"

namespace platform {
namespace {

struct Current {
  Machine machine;
  std::function<Machine()> source;  // empty once it has been called
  const Entry* onlyDevice = nullptr;
};

// Never destroyed: what the probe does not release may still refer to it.
Current& TheCurrent() {
  static auto& current = *new Current;
  return current;
}

}  // namespace

void SetMachine(std::function<Machine()> source) {
  EndProcess();
  DropTexts();
  DropTree();
  TheCurrent() = {{}, std::move(source), nullptr};
}

void SetMachine(Machine machine) {
  SetMachine(std::function<Machine()>());
  TheCurrent().machine = std::move(machine);
}

const Machine& ThisMachine() {
  Current& current = TheCurrent();
  if (const auto source = std::exchange(current.source, nullptr)) current.machine = source();
  return current.machine;
}

void SetOnlyDevice(const Entry* device) { TheCurrent().onlyDevice = device; }

const Entry* OnlyDevice() { return TheCurrent().onlyDevice; }

bool Property::operator==(const Property& other) const { return value == other.value; }

std::optional<base::Block> BlockAnswer::Block() const {
  if (!succeeds) return std::nullopt;
  base::Block block{};
  std::ranges::copy(bytes, block.begin());
  return block;
}

Number IntegerNumber(std::int64_t value) {
  const bool fits = value >= std::numeric_limits<std::int32_t>::min() &&
                    value <= std::numeric_limits<std::int32_t>::max();
  return {fits ? kCFNumberSInt32Type : kCFNumberSInt64Type, static_cast<std::uint64_t>(value)};
}

Number Float64Number(double value) {
  return {kCFNumberFloat64Type, std::bit_cast<std::uint64_t>(value)};
}

const Property* Find(const Dictionary& dictionary, std::string_view key) {
  const auto found = dictionary.find(key);
  return found == dictionary.end() ? nullptr : &found->second;
}

}  // namespace platform
