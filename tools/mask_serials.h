// The masking of what tells one drive from every other of its model, so that a
// recording can be shown to strangers.
#pragma once

#include "platform/machine.h"

namespace tools {

// For a listing that the recorder made; another may end in std::bad_variant_access.
// Puts an X in the place of each character of every serial number in `listing`, at any
// depth: in properties, and in the IDENTIFY data of recorded drives. Blanks and NULs stay.
// In IDENTIFY data the world wide name and the vendor's own words become zero, and a
// checksum that was right is made right again; a block of another size is made 512 bytes. A serial
// number under a key that does not call it one is not recognised.
void MaskSerials(platform::Property& listing);

}  // namespace tools
