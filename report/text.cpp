#include "report/text.h"

#include <utf8.h>

#include "base/printable_text.h"

namespace report {
namespace {

constexpr char kNoBreakByte = '\xCA';
constexpr std::string_view kNoBreakSpace = "\u00A0";

}  // namespace

std::string ToText(std::string_view bytes) {
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i++) {
    const bool beginsCharacter = i + 1 < bytes.size() && (bytes[i + 1] & 0xC0) == 0x80;
    if (bytes[i] == kNoBreakByte && !beginsCharacter) {
      text += kNoBreakSpace;
    } else {
      text += bytes[i];
    }
  }
  return base::ValidUTF8(text);
}

std::size_t Width(std::string_view text) {
  return static_cast<std::size_t>(utf8::unchecked::distance(text.begin(), text.end()));
}

std::string Shortened(const std::string& text, std::size_t width) {
  if (Width(text) <= width) return text;
  auto end = text.begin();
  utf8::unchecked::advance(end, width - 1);
  return std::string(text.begin(), end) + "\u2026";
}

std::string PathText(std::string_view device) {
  return device.empty() ? "(no path)" : base::OneLine(device);
}

std::string DamageText(const Damage& damage) {
  return "line " + std::to_string(damage.line) + ": " + damage.what;
}

}  // namespace report
