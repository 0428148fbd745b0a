// Counts of bytes as text for people.
#pragma once

#include <string>

namespace base {

// "512 B", "1.00 KB", "232.89 GB": with decimal units, up to EB. `bytes` is not negative.
std::string ByteCountText(double bytes);

}  // namespace base
