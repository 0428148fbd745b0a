#include "probe/text/byte_count_labels.h"

#include <Carbon/Carbon.h>

#include <cfloat>
#include <cstdio>

#include "probe/state/process_state.h"

enum { kLastVersionWithBinaryUnits = 0x105F };

struct UnitRow {
  const char *format;       // abbreviated
  const char *wholeFormat;  // abbreviated, when the last division left no remainder
  CFStringRef fullNameKey;
};

static const UnitRow *Unit(int index) {
  static const UnitRow kUnits[] = {
      {"%ld B", "%ld B", CFSTR("Bytes")},          {"%.2f KB", "%.2f KB", CFSTR("Kilobytes")},
      {"%.2f MB", "%.2f MB", CFSTR("Megabytes")},  {"%.2f GB", "%.2f GB", CFSTR("Gigabytes")},
      {"%.2f TB", "%.2f TB", CFSTR("Terabytes")},  {"%.2f PB", "%.2f PB", CFSTR("PetaBytes")},
      {"%.2f EB", "%.2f EB", CFSTR("ExaBytes")},   {"%.2f ZB", "%.2f ZB", CFSTR("ZettaBytes")},
      {"%.2f YB", "%.0f YB", CFSTR("YottaBytes")},
  };
  return &kUnits[index];
}

// Labels are computed in single precision. A higher precision, as 32-bit x86 has without SSE, would
// give other decimals.
static_assert(FLT_EVAL_METHOD == 0, "Float32 arithmetic must be in single precision");

// A magnitude in its unit. Only the remainder of the last division counts.
struct ScaledCount {
  int unitIndex;
  Boolean bWhole;
  Float32 scaled;
};

static ScaledCount ScaleMagnitude(SInt64 magnitude) {
  SInt64 base = gMySysVersion > kLastVersionWithBinaryUnits ? 1000 : 1024;
  SInt64 remainder = 0;
  int unitIndex = 0;
  while (magnitude >= base) {
    remainder = magnitude % base;
    magnitude /= base;
    unitIndex++;
  }
  Float32 fraction = (Float32)remainder / (Float32)base;
  ScaledCount count = {unitIndex, remainder == 0, (Float32)magnitude + fraction};
  return count;
}

static void AbbreviatedLabel(const ScaledCount *count, const char *sign, char *text) {
  const UnitRow *unit = Unit(count->unitIndex);
  char label[256];
  if (count->unitIndex == 0) {
    snprintf(label, sizeof label, unit->format, (long)(UInt32)count->scaled);
  } else {
    snprintf(label, sizeof label, count->bWhole ? unit->wholeFormat : unit->format,
             (Float64)count->scaled);
  }
  sprintf(text, "%s%s", sign, label);
}

// False if there is no such name, or it has more than 255 bytes.
static Boolean GetFullUnitName(int unitIndex, char *name, CFIndex nameSize) {
  CFStringRef key = Unit(unitIndex)->fullNameKey;
  CFStringRef localized = CFBundleCopyLocalizedString(CFBundleGetMainBundle(), key, key, nullptr);
  if (localized == nullptr) return false;
  Boolean bConverted = CFStringGetCString(localized, name, nameSize, GetApplicationTextEncoding());
  CFRelease(localized);
  return bConverted;
}

static void FullNameLabel(const ScaledCount *count, const char *sign, char *text) {
  char name[256];
  if (!GetFullUnitName(count->unitIndex, name, sizeof name)) return;
  if (count->unitIndex == 0) {
    sprintf(text, "%s%ld %s", sign, (long)(UInt32)count->scaled, name);
    return;
  }
  const char *format = count->bWhole ? "%s%.0f %s" : "%s%.3f %s";
  sprintf(text, format, sign, (Float64)count->scaled, name);
}

void BytesSInt64ToCStrWLabel(SInt64 byteCount, char *text, Boolean bFullNames) {
  const SInt64 kMostNegative = (SInt64)(1ULL << 63);
  const char *sign = byteCount < 0 ? "-" : "";
  if (byteCount == kMostNegative) byteCount++;  // its magnitude does not fit
  ScaledCount count = ScaleMagnitude(byteCount < 0 ? -byteCount : byteCount);
  if (bFullNames) {
    FullNameLabel(&count, sign, text);
  } else {
    AbbreviatedLabel(&count, sign, text);
  }
}
