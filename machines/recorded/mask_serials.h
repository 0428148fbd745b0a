// Masks what tells a drive from all others of its model, so that a recording can be shown to
// strangers.
#pragma once

#include "platform/machine.h"

namespace machines {

// Puts an X in the place of each character of every serial number in `listing`, at any depth: in
// properties, and in the IDENTIFY data of recorded drives. Blanks and NULs stay, and a number
// becomes 0. The other words of the IDENTIFY data that tell one drive from others become zero
// (MaskIdentity in drives/identify_data.h). The name of the host is masked like a serial number. A
// serial number is recognised only if its key calls it one. `listing` has to be made by the
// recorder: for another this may throw std::bad_variant_access.
void MaskSerials(platform::Property& listing);

}  // namespace machines
