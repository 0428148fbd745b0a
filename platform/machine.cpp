#include "platform/machine.h"

#include <bit>
#include <chrono>
#include <limits>

namespace platform {

bool Property::operator==(const Property& other) const { return value == other.value; }

Date Now() {
  using namespace std::chrono;
  constexpr sys_days kEpoch = year(2001) / January / 1;
  return {duration_cast<seconds>(system_clock::now() - kEpoch).count()};
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

const std::string* FindText(const Dictionary& dictionary, std::string_view key) {
  const Property* found = Find(dictionary, key);
  return found == nullptr ? nullptr : std::get_if<std::string>(&found->value);
}

}  // namespace platform
