// The encodings that this layer converts between: its strings are UTF-8, and so
// are the 8-bit encodings of the system and of the application.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

namespace platform {

inline constexpr CFStringEncoding kEncodingUTF8 = 0x08000100;

}  // namespace platform
