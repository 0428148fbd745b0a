// A block: the unit in which an ATA drive sends data.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace base {

inline constexpr std::size_t kBlockSize = 512;  // in bytes
using Block = std::array<std::uint8_t, kBlockSize>;

}  // namespace base
