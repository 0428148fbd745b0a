// What attributes count, for people. smartprobe-attributes(7) says more.
#pragma once

#include <cstdint>
#include <string_view>

namespace views {

// A sentence; empty for an attribute that makers use in different ways.
std::string_view MeaningOf(std::uint8_t id);

}  // namespace views
