// The result codes that this layer's failed calls give. The probe tells success
// from failure only, so they are no part of the framework headers.
#pragma once

#include <IOKit/IOCFPlugIn.h>

namespace platform {

inline constexpr IOReturn kIOReturnError = static_cast<IOReturn>(0xE00002BC);
inline constexpr IOReturn kIOReturnNoResources = static_cast<IOReturn>(0xE00002BE);
inline constexpr IOReturn kIOReturnUnsupported = static_cast<IOReturn>(0xE00002C7);
inline constexpr HRESULT kNoInterface = static_cast<HRESULT>(0x80000004);

}  // namespace platform
