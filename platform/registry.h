// What the handles of registry objects stand for.
#pragma once

#include <IOKit/IOKitLib.h>

#include "platform/machine.h"

namespace platform {

// The machine's entry of a service. A handle that is null, dead or of an iterator is misuse of
// `call`.
const Entry& EntryOf(io_service_t service, const char* call);

}  // namespace platform
