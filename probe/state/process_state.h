// The values that hold for the whole process. Start-up sets them; everything below the pass
// may read them.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

extern SInt32 gMySysVersion;      // binary-coded decimal, 0xMMmb; 0 until it is read
extern Boolean bLittleEndianCPU;  // RunProbe sets it on any processor; false before that
