// Registry values as text, and the tidying of texts and fields in place. Nothing
// here looks anything up or knows what a value means.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

// The most that ConvertCFNumberToCStr writes: a sign, the 309 digits of the largest
// 64-bit floating-point number, a point, six decimals and the NUL.
enum { kNumberTextSize = 318 };

// Writes `number`, which is borrowed, in decimal or, if it is an integer and
// `bHexadecimal` is set, in upper-case hexadecimal: of its own width without
// leading zeros up to 32 bits, and as eight bytes, the least significant first, at 64. An 8-bit
// number in decimal is the character of that code. At most kNumberTextSize bytes,
// 21 for an integer, 48 for a 32-bit float. A number of an unknown type, or one
// that cannot be fetched, leaves `text` as it is; the CFIndex type gives "".
void ConvertCFNumberToCStr(CFNumberRef number, char *text, Boolean bHexadecimal);

// Writes the bytes of `data`, which is borrowed, in hexadecimal: 2n + 1 bytes for
// n. Without memory for a copy of the data the text is empty.
void ConvertCFDataToCStr(CFDataRef data, char *text);

// Writes two upper-case digits for each of `count` bytes, high half first, and a
// NUL: 2 * count + 1 bytes.
void Buffer2HexCStr(const UInt8 *bytes, UInt32 count, char *text);

// Remove in place every "0", or every blank, before the first other character.
// Only the blank counts as one. Null is left alone.
void StripLeadingZeros(char *text);
void StripLeadingSpaces(char *text);

// The same for the blanks at both ends; those inside stay.
void StripAllSpaces(char *text);

// Reverses a field of 2, 4 or 8 bytes in place where bLittleEndianCPU is set.
// Another size is left alone.
void ReverseBytesCheck(void *field, UInt32 size);
