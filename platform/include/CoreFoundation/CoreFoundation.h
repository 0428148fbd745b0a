// Property objects: the declarations of this framework that the probe calls,
// source-compatible with the platform's. Nothing that it does not call is here.
#pragma once

#ifdef __LP64__
typedef int SInt32;
typedef unsigned int UInt32;
#else
typedef long SInt32;
typedef unsigned long UInt32;
#endif
typedef signed char SInt8;
typedef unsigned char UInt8;
typedef short SInt16;
typedef unsigned short UInt16;
typedef long long SInt64;
typedef float Float32;
typedef double Float64;
typedef unsigned char Boolean;

typedef long CFIndex;
typedef unsigned long CFTypeID;
typedef UInt32 CFStringEncoding;
typedef CFIndex CFNumberType;

typedef const void *CFTypeRef;
typedef const struct PlatformAllocator *CFAllocatorRef;
typedef const struct PlatformString *CFStringRef;
typedef const struct PlatformNumber *CFNumberRef;
typedef const struct PlatformData *CFDataRef;
typedef const struct PlatformDictionary *CFDictionaryRef;
typedef struct PlatformDictionary *CFMutableDictionaryRef;
typedef const struct PlatformUUID *CFUUIDRef;
typedef struct PlatformBundle *CFBundleRef;

typedef struct {
  CFIndex location;
  CFIndex length;
} CFRange;

typedef struct {
  UInt8 byte0, byte1, byte2, byte3, byte4, byte5, byte6, byte7;
  UInt8 byte8, byte9, byte10, byte11, byte12, byte13, byte14, byte15;
} CFUUIDBytes;

enum {
  kCFNumberSInt8Type = 1,
  kCFNumberSInt16Type = 2,
  kCFNumberSInt32Type = 3,
  kCFNumberSInt64Type = 4,
  kCFNumberFloat32Type = 5,
  kCFNumberFloat64Type = 6,
  kCFNumberCharType = 7,
  kCFNumberShortType = 8,
  kCFNumberIntType = 9,
  kCFNumberLongType = 10,
  kCFNumberLongLongType = 11,
  kCFNumberFloatType = 12,
  kCFNumberDoubleType = 13,
  kCFNumberCFIndexType = 14
};

enum { kCFStringEncodingASCII = 0x0600 };

#define kCFAllocatorDefault ((CFAllocatorRef)0)

static inline CFRange CFRangeMake(CFIndex location, CFIndex length) {
  CFRange range = {location, length};
  return range;
}

// A constant string of the literal `text`; it is never released.
#define CFSTR(text) PlatformConstantString("" text "")

extern "C" {

CFStringRef PlatformConstantString(const char *text);

// Of all calls: objects that come in are borrowed. Those whose call is named Create or Copy are the
// caller's to release, once; all others are borrowed too. Null and an object of another type are
// misuse, at which this layer aborts. One that is freed is misuse too; CFRelease alone notices it,
// AddressSanitizer everywhere. A failed call leaves its outputs as they were, unless more is said.

// Gives back the caller's reference, and frees the object with it. To release what is not the
// caller's, a constant for one, is misuse.
void CFRelease(CFTypeRef object);

// The type of any object: one of the four that follow, or another. The numbers are this process's.
CFTypeID CFGetTypeID(CFTypeRef object);

CFTypeID CFStringGetTypeID(void);
CFTypeID CFNumberGetTypeID(void);
CFTypeID CFDataGetTypeID(void);
CFTypeID CFDictionaryGetTypeID(void);

// Writes the text in that encoding and a NUL, at most `bufferSize` bytes. False where it does not
// fit or a character has no form in the encoding: then all of the buffer is written, with part of
// the text, 0xA5 in the rest, and no NUL after it.
Boolean CFStringGetCString(CFStringRef string, char *buffer, CFIndex bufferSize,
                           CFStringEncoding encoding);

// The encoding of 8-bit text; here it is UTF-8.
CFStringEncoding CFStringGetSystemEncoding(void);

// A string of these bytes. Null where they are no text in the encoding; here UTF-8 alone is known.
CFStringRef CFStringCreateFromExternalRepresentation(CFAllocatorRef allocator, CFDataRef data,
                                                     CFStringEncoding encoding);

// The type that the number was created with. It may be one that is not listed above.
CFNumberType CFNumberGetType(CFNumberRef number);

// Stores the number as that type, in as many bytes as the type has. False where the value does not
// survive, as 1.5 and 2^32 do not as an SInt32: what is left of it is stored all the same. False
// too, with nothing stored, for a type that is not listed, and in this layer for one of floating
// point unless the number has that width. Here no 32-bit number of floating point becomes an
// integer either: what is stored then means nothing.
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void *value);

// In bytes.
CFIndex CFDataGetLength(CFDataRef data);

// Writes the `range.length` bytes from `range.location` on. A range that leaves the data is misuse.
void CFDataGetBytes(CFDataRef data, CFRange range, UInt8 *buffer);

// The value under the string `key`, which lives as long as the dictionary. Null where there is
// none.
const void *CFDictionaryGetValue(CFDictionaryRef dictionary, const void *key);

// The same, stored. False where there is none.
Boolean CFDictionaryGetValueIfPresent(CFDictionaryRef dictionary, const void *key,
                                      const void **value);

// Never null.
CFBundleRef CFBundleGetMainBundle(void);

// The bundle's translation of `key`, or, where it has none, `value`, which is not null. Here a
// bundle has one table, whatever it is called.
CFStringRef CFBundleCopyLocalizedString(CFBundleRef bundle, CFStringRef key, CFStringRef value,
                                        CFStringRef tableName);

// A constant: the same bytes give the same object, so that two can be compared by their pointers.
CFUUIDRef CFUUIDGetConstantUUIDWithBytes(CFAllocatorRef allocator, UInt8 byte0, UInt8 byte1,
                                         UInt8 byte2, UInt8 byte3, UInt8 byte4, UInt8 byte5,
                                         UInt8 byte6, UInt8 byte7, UInt8 byte8, UInt8 byte9,
                                         UInt8 byte10, UInt8 byte11, UInt8 byte12, UInt8 byte13,
                                         UInt8 byte14, UInt8 byte15);

// The bytes in their order.
CFUUIDBytes CFUUIDGetUUIDBytes(CFUUIDRef uuid);

}  // extern "C"
