// The masking of what tells one drive from every other of its model, so that a
// recording can be shown to strangers.
#pragma once

#include "platform/machine.h"

namespace machines {

// Puts an X in the place of each character of every serial number in `listing`, at any
// depth: in properties, in the IDENTIFY data of recorded drives. The padding around a
// number stays. World wide name and vendor's words of IDENTIFY data become zero, and its
// checksum is right again where it was.
void MaskSerials(platform::Property& listing);

}  // namespace machines
