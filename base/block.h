// A block: what an ATA drive sends at a time.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace base {

inline constexpr std::size_t kBlockSize = 512;
using Block = std::array<std::uint8_t, kBlockSize>;

}  // namespace base
