#include "report/figures.h"

#include <array>
#include <span>

namespace report {
namespace {

struct FixedText {
  std::string_view text;
  Figure figure;
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

std::optional<Figure> Parse(std::string_view text, std::span<const FixedText> fixedTexts) {
  for (const FixedText& fixed : fixedTexts) {
    if (fixed.text == text) return fixed.figure;
  }
  const auto number = ParseDecimal<std::uint8_t>(text);
  if (!number) return std::nullopt;
  return Figure{*number, true};
}

std::string Text(std::uint8_t number, std::span<const FixedText> fixedTexts) {
  for (const FixedText& fixed : fixedTexts) {
    if (fixed.figure.number == number) return std::string(fixed.text);
  }
  return std::to_string(number);
}

}  // namespace

std::optional<Figure> ParseValue(std::string_view text) { return Parse(text, kValueTexts); }

std::optional<Figure> ParseThreshold(std::string_view text) { return Parse(text, kThresholdTexts); }

std::string ValueText(std::uint8_t value) { return Text(value, kValueTexts); }

std::string ThresholdText(std::uint8_t threshold) { return Text(threshold, kThresholdTexts); }

}  // namespace report
