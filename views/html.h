// What the parts of the page share: texts that are safe in HTML, and the classes of colours.
#pragma once

#include <fmt/format.h>

#include <string>
#include <string_view>
#include <utility>

#include "health/grades.h"

namespace views {

// The text with what would be markup escaped, for content and for attributes in double quotes.
std::string Escaped(std::string_view text);

// The class of the elements that have that colour: "good", "warning" or "failing". Static.
std::string_view ClassOf(health::Color color);

template <typename... Arguments>
void Append(std::string& page, fmt::format_string<Arguments...> format, Arguments&&... arguments) {
  page += fmt::format(format, std::forward<Arguments>(arguments)...);
}

}  // namespace views
