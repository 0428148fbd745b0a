#include "views/html.h"

#include <array>
#include <cstddef>

namespace views {

std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      case '\'':
        escaped += "&#39;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

std::string_view ClassOf(health::Color color) {
  constexpr std::array<std::string_view, 3> kClasses = {"good", "warning", "failing"};
  return kClasses.at(static_cast<std::size_t>(color));
}

}  // namespace views
