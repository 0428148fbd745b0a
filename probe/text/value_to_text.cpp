#include "probe/text/value_to_text.h"

#include <Carbon/Carbon.h>

#include <cstdio>
#include <cstring>

#include "probe/state/process_state.h"

// Each fetches the number and writes its text. If the number cannot be fetched, `text` stays as it
// is.

static void ConvertSInt8(CFNumberRef number, CFNumberType type, char *text, Boolean bHexadecimal) {
  SInt8 value = 0;
  if (!CFNumberGetValue(number, type, &value)) return;
  if (bHexadecimal) {
    sprintf(text, "%X", (unsigned)(UInt8)value);
  } else {
    sprintf(text, "%c", value);
  }
}

static void ConvertSInt16(CFNumberRef number, CFNumberType type, char *text, Boolean bHexadecimal) {
  SInt16 value = 0;
  if (!CFNumberGetValue(number, type, &value)) return;
  if (bHexadecimal) {
    sprintf(text, "%hX", (UInt16)value);
  } else {
    sprintf(text, "%hd", value);
  }
}

// Int and Long too are fetched as SInt32. Where a long has 32 bits, the value is the same. Where it
// has 64, to fetch a Long as such would write beyond the variable.
static void ConvertSInt32(CFNumberRef number, char *text, Boolean bHexadecimal) {
  SInt32 value = 0;
  if (!CFNumberGetValue(number, kCFNumberSInt32Type, &value)) return;
  if (bHexadecimal) {
    sprintf(text, "%lX", (unsigned long)(UInt32)value);
  } else {
    sprintf(text, "%ld", (long)value);
  }
}

static void ConvertSInt64(CFNumberRef number, CFNumberType type, char *text, Boolean bHexadecimal) {
  SInt64 value = 0;
  if (!CFNumberGetValue(number, type, &value)) return;
  if (bHexadecimal) {
    UInt8 bytes[sizeof value];
    for (UInt32 i = 0; i < sizeof bytes; i++) bytes[i] = (UInt8)(value >> (8 * i));
    Buffer2HexCStr(bytes, sizeof bytes, text);
  } else {
    sprintf(text, "%lld", (long long)value);
  }
}

static void ConvertFloat32(CFNumberRef number, CFNumberType type, char *text) {
  Float32 value = 0;
  if (!CFNumberGetValue(number, type, &value)) return;
  sprintf(text, "%f", (Float64)value);
}

static void ConvertFloat64(CFNumberRef number, CFNumberType type, char *text) {
  Float64 value = 0;
  if (!CFNumberGetValue(number, type, &value)) return;
  sprintf(text, "%f", value);
}

void ConvertCFNumberToCStr(CFNumberRef number, char *text, Boolean bHexadecimal) {
  CFNumberType type = CFNumberGetType(number);
  switch (type) {
    case kCFNumberSInt8Type:
    case kCFNumberCharType:
      ConvertSInt8(number, type, text, bHexadecimal);
      break;
    case kCFNumberSInt16Type:
    case kCFNumberShortType:
      ConvertSInt16(number, type, text, bHexadecimal);
      break;
    case kCFNumberSInt32Type:
    case kCFNumberIntType:
    case kCFNumberLongType:
      ConvertSInt32(number, text, bHexadecimal);
      break;
    case kCFNumberSInt64Type:
    case kCFNumberLongLongType:
      ConvertSInt64(number, type, text, bHexadecimal);
      break;
    case kCFNumberFloat32Type:
    case kCFNumberFloatType:
      ConvertFloat32(number, type, text);
      break;
    case kCFNumberFloat64Type:
    case kCFNumberDoubleType:
      ConvertFloat64(number, type, text);
      break;
    case kCFNumberCFIndexType:
      text[0] = '\0';
      break;
    default:
      break;
  }
}

void ConvertCFDataToCStr(CFDataRef data, char *text) {
  CFIndex length = CFDataGetLength(data);
  Ptr bytes = NewPtr(length);
  if (bytes == nullptr) {
    text[0] = '\0';
    return;
  }
  CFDataGetBytes(data, CFRangeMake(0, length), (UInt8 *)bytes);
  Buffer2HexCStr((const UInt8 *)bytes, (UInt32)length, text);
  DisposePtr(bytes);
}

void Buffer2HexCStr(const UInt8 *bytes, UInt32 count, char *text) {
  static const char kDigits[] = "0123456789ABCDEF";
  text[2 * count] = '\0';
  for (UInt32 i = 0; i < count; i++) {
    text[2 * i] = kDigits[bytes[i] >> 4];
    text[2 * i + 1] = kDigits[bytes[i] & 0x0F];
  }
}

static void StripLeading(char *text, char unwanted) {
  if (text == nullptr) return;
  const char *rest = text;
  while (*rest == unwanted) rest++;
  if (rest != text) memmove(text, rest, strlen(rest) + 1);
}

void StripLeadingZeros(char *text) { StripLeading(text, '0'); }

void StripLeadingSpaces(char *text) { StripLeading(text, ' '); }

void StripAllSpaces(char *text) {
  StripLeadingSpaces(text);
  if (text == nullptr) return;
  size_t length = strlen(text);
  while (length > 0 && text[length - 1] == ' ') length--;
  text[length] = '\0';
}

void ReverseBytesCheck(void *field, UInt32 size) {
  if (!bLittleEndianCPU) return;
  if (size != 2 && size != 4 && size != 8) return;
  UInt8 *bytes = (UInt8 *)field;
  for (UInt32 i = 0; i < size / 2; i++) {
    UInt8 other = bytes[size - 1 - i];
    bytes[size - 1 - i] = bytes[i];
    bytes[i] = other;
  }
}
