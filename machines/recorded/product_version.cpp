#include "machines/recorded/product_version.h"

#include <algorithm>

namespace machines {
namespace {

constexpr SInt32 kLargestFirst = 99;
constexpr SInt32 kLargestOther = 9;

// Removes the figures at the start of `text` and gives their number, 100 for all above 99.
// Nothing: there are none.
std::optional<SInt32> TakeNumber(std::string_view& text) {
  const auto length = std::min(text.find_first_not_of("0123456789"), text.size());
  if (length == 0) return std::nullopt;
  SInt32 number = 0;
  for (const char figure : text.substr(0, length)) {
    number = std::min(number * 10 + (figure - '0'), kLargestFirst + 1);
  }
  text.remove_prefix(length);
  return number;
}

}  // namespace

std::optional<SInt32> SystemVersion(std::string_view productVersion) {
  const auto first = TakeNumber(productVersion);
  if (!first || *first > kLargestFirst) return std::nullopt;
  SInt32 version = (*first / 10) << 12 | (*first % 10) << 8;
  for (const int shift : {4, 0}) {
    if (productVersion.empty()) return version;
    if (!productVersion.starts_with('.')) return std::nullopt;
    productVersion.remove_prefix(1);
    const auto other = TakeNumber(productVersion);
    if (!other) return std::nullopt;
    version |= std::min(*other, kLargestOther) << shift;
  }
  if (!productVersion.empty()) return std::nullopt;
  return version;
}

}  // namespace machines
