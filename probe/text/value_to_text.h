// Turns registry values into text, and tidies texts and fields in place. Nothing here looks
// anything up or knows what a value means.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

// The most that ConvertCFNumberToCStr writes: a sign, the 309 digits of the largest
// 64-bit floating-point number, a point, six decimals and the NUL.
enum { kNumberTextSize = 318 };

// Writes `number`, which is borrowed, in decimal. An integer is written in upper-case hexadecimal
// if `bHexadecimal` is set: without leading zeros if it has up to 32 bits, and as eight bytes, the
// least significant first, if it has 64. An 8-bit number in decimal is the character of that code.
//
// Writes at most kNumberTextSize bytes with the NUL, 21 for an integer, 48 for a 32-bit float. If
// the type is unknown or the number cannot be fetched, `text` stays as it is. The CFIndex type
// gives "".
void ConvertCFNumberToCStr(CFNumberRef number, char *text, Boolean bHexadecimal);

// Writes the bytes of `data`, which is borrowed, in hexadecimal: 2n + 1 bytes for n. If there is no
// memory for a copy of the data, the text is empty.
void ConvertCFDataToCStr(CFDataRef data, char *text);

// Writes two upper-case digits for each of `count` bytes, high half first, and a
// NUL: 2 * count + 1 bytes.
void Buffer2HexCStr(const UInt8 *bytes, UInt32 count, char *text);

// Remove in place every "0", or every blank, before the first other character. Only a space is a
// blank. Null is left alone.
void StripLeadingZeros(char *text);
void StripLeadingSpaces(char *text);

// The same for the blanks at both ends; those inside stay.
void StripAllSpaces(char *text);

// Reverses a field of 2, 4 or 8 bytes in place if bLittleEndianCPU is set. A field of another size
// is left alone.
void ReverseBytesCheck(void *field, UInt32 size);
