// The masking of what tells one drive from every other of its model, so that a
// recording can be shown to strangers.
#pragma once

#include "platform/machine.h"

namespace machines {

// For a listing that the recorder made; another may end in std::bad_variant_access.
// Puts an X in the place of each character of every serial number in `listing`, at any
// depth: in properties, and in the IDENTIFY data of recorded drives, whose other tell-tale words
// become zero (MaskIdentity in drives/identify_data.h). Blanks and NULs stay. A serial number under
// a key that does not call it one is not recognised.
void MaskSerials(platform::Property& listing);

}  // namespace machines
