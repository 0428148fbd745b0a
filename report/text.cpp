#include "report/text.h"

#include <utf8.h>

#include <algorithm>

#include "base/printable_text.h"

namespace report {
namespace {

constexpr char kNoBreakByte = '\xCA';
constexpr std::string_view kNoBreakSpace = "\u00A0";

bool IsPlain(char c) { return c >= 0x20 && c < 0x7F; }

}  // namespace

std::string ToText(std::string_view bytes) {
  if (std::all_of(bytes.begin(), bytes.end(), IsPlain)) return std::string(bytes);
  std::string text;
  for (const char c : bytes) {
    if (c == kNoBreakByte) {
      text += kNoBreakSpace;
    } else {
      text += c;
    }
  }
  return base::OneLine(text);
}

std::size_t Width(const std::string& text) {
  return static_cast<std::size_t>(utf8::unchecked::distance(text.begin(), text.end()));
}

std::string_view Trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

}  // namespace report
