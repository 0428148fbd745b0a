// Makes short labels with a unit of byte counts. Nothing else about a drive is known here.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

// Writes a label of `byteCount` bytes, which may be negative: "232.89 GB". The unit base is 1000
// from gMySysVersion 10.6 on, and 1024 before that. With `bFullNames` the unit is a word from the
// main bundle's string table: "232.886 Gigabytes". Writes at most 12 bytes with the NUL, with full
// names at most 266. If there is no full name, `text` stays as it is. An abbreviated label never
// fails. The report's labels are abbreviated, and nothing asks for full names. The units go up to
// YB, but a 64-bit count only reaches EB.
void BytesSInt64ToCStrWLabel(SInt64 byteCount, char *text, Boolean bFullNames);
