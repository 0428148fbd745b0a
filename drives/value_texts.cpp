#include "drives/value_texts.h"

#include <array>
#include <span>

namespace drives {
namespace {

struct FixedText {
  std::string_view text;
  ReportedValue value;
};

constexpr std::array kValueTexts{
    FixedText{"0 (Invalid)", {0, false}},
    FixedText{"No Data", {100, true}},
    FixedText{"254 (Invalid)", {254, false}},
    FixedText{"255 (Invalid)", {255, false}},
};

constexpr std::array kThresholdTexts{
    FixedText{"Always Passing", {0, true}},
    FixedText{"254 (Invalid)", {254, false}},
    FixedText{"Always Failing", {255, true}},
};

std::optional<ReportedValue> Parse(std::string_view text, std::span<const FixedText> fixedTexts) {
  for (const FixedText& fixed : fixedTexts) {
    if (fixed.text == text) return fixed.value;
  }
  const auto number = ParseDecimal<std::uint8_t>(text);
  if (!number) return std::nullopt;
  return ReportedValue{*number, true};
}

}  // namespace

std::optional<ReportedValue> ParseValue(std::string_view text) { return Parse(text, kValueTexts); }

std::optional<ReportedValue> ParseThreshold(std::string_view text) {
  return Parse(text, kThresholdTexts);
}

}  // namespace drives
