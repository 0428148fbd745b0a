// The masking of what tells one drive from every other of its model, so that a
// recording can be shown to strangers.
#pragma once

#include "platform/machine.h"

namespace tools {

// Puts an X in the place of each character of every serial number in `listing`, at any
// depth: in properties, and in the IDENTIFY data of recorded drives. Blanks and NULs stay.
// In IDENTIFY data the world wide name and the vendor's own words become zero, and a
// checksum that was right is made right again.
void MaskSerials(platform::Property& listing);

}  // namespace tools
