// The search for text that is not UTF-8, at any depth.
#include "machines/recorded/text_check.h"

#include <utf8.h>

#include <string_view>

#include "machines/recorded/recording_error.h"

namespace machines {
namespace {

using platform::Property;

std::optional<std::string> Fault(const std::string& text) {
  const auto invalid = utf8::find_invalid(text.begin(), text.end());
  if (invalid == text.end()) return std::nullopt;
  const bool isNul = std::string_view(invalid, text.end()).starts_with("\xC0\x80");
  return isNul ? "text that holds a NUL" : "text that is not UTF-8";
}

std::optional<std::string> Fault(const Property& property) {
  if (const auto* text = std::get_if<std::string>(&property.value)) return Fault(*text);
  if (const auto* array = std::get_if<platform::Array>(&property.value)) {
    for (const Property& item : *array) {
      if (auto fault = Fault(item)) return fault;
    }
  }
  if (const auto* dictionary = std::get_if<platform::Dictionary>(&property.value)) {
    for (const platform::KeyedProperty& keyed : *dictionary) {
      if (auto fault = TextFault(keyed)) return fault;
    }
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::string> TextFault(const platform::KeyedProperty& keyed) {
  auto fault = Fault(keyed.key);
  if (!fault) fault = Fault(keyed.value);
  if (!fault) return std::nullopt;
  return Shortened(keyed.key) + ": " + *fault;
}

}  // namespace machines
