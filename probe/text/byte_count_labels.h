// Byte counts as short labels with a unit. Nothing else about a drive is known here.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

// Writes a label of `byteCount` bytes, which may be negative: "232.89 GB". The unit
// base is 1000 from gMySysVersion 10.6 on, before that 1024. With `bFullNames`
// the unit is a word from the main bundle's string table: "232.886 Gigabytes".
// Writes at most 12 bytes with the NUL, with full names at most 266. A full name
// that cannot be had leaves `text` as it is; an abbreviated label never fails.
// The report's labels are abbreviated; the full names are the second form of the same
// call, which nothing asks for. The units go on to YB, beyond any 64-bit count (EB).
void BytesSInt64ToCStrWLabel(SInt64 byteCount, char *text, Boolean bFullNames);
