// Property objects: the declarations of this framework that the probe uses, and no others. They are
// source-compatible with the platform's.
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

// These rules hold for all calls. A call borrows the objects that it is passed. The caller owns an
// object from a call named Create or Copy, and has to release it once. It borrows all others.
//
// To pass null or an object of another type is misuse, and this layer then aborts. To pass a freed
// object is misuse too, but only CFRelease notices it; AddressSanitizer notices it everywhere. A
// failed call leaves its outputs as they were, unless its comment says more.

// Gives back the caller's reference and frees the object. To release an object that the caller does
// not own, such as a constant, is misuse.
void CFRelease(CFTypeRef object);

// The type of any object: one of the four that follow, or another. The numbers may differ in
// another process.
CFTypeID CFGetTypeID(CFTypeRef object);

CFTypeID CFStringGetTypeID(void);
CFTypeID CFNumberGetTypeID(void);
CFTypeID CFDataGetTypeID(void);
CFTypeID CFDictionaryGetTypeID(void);

// Writes the text in that encoding and a NUL, at most `bufferSize` bytes. Returns false if the text
// does not fit or has a character that the encoding lacks. Then all of the buffer is written: part
// of the text, 0xA5 in the rest, and no NUL.
Boolean CFStringGetCString(CFStringRef string, char *buffer, CFIndex bufferSize,
                           CFStringEncoding encoding);

// The encoding of 8-bit text; here it is UTF-8.
CFStringEncoding CFStringGetSystemEncoding(void);

// A string of these bytes. Null if they are no text in the encoding. This layer only knows UTF-8.
CFStringRef CFStringCreateFromExternalRepresentation(CFAllocatorRef allocator, CFDataRef data,
                                                     CFStringEncoding encoding);

// The type that the number was created with. It may be one that is not listed above.
CFNumberType CFNumberGetType(CFNumberRef number);

// Stores the number as that type, in as many bytes as the type has. Returns false if the value does
// not survive, as 1.5 and 2^32 do not as an SInt32. The changed value is stored all the same.
//
// Also returns false, and stores nothing, for a type that is not listed. In this layer the same
// happens for a floating-point type, unless the number is a floating-point number of that width.
// This layer does not make an integer of a 32-bit floating-point number either: it returns false,
// and the integer that it stores means nothing.
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void *value);

// The number of bytes.
CFIndex CFDataGetLength(CFDataRef data);

// Writes `range.length` bytes of the data, from `range.location` on. A range that goes beyond the
// data is misuse.
void CFDataGetBytes(CFDataRef data, CFRange range, UInt8 *buffer);

// The value under the string `key`. It lives as long as the dictionary. Null if there is none.
const void *CFDictionaryGetValue(CFDictionaryRef dictionary, const void *key);

// Stores the value that CFDictionaryGetValue gives. Returns false if there is none.
Boolean CFDictionaryGetValueIfPresent(CFDictionaryRef dictionary, const void *key,
                                      const void **value);

// The program's own bundle. Never null.
CFBundleRef CFBundleGetMainBundle(void);

// The bundle's translation of `key`. If there is none, a string with the text of `value`, which
// must not be null. In this layer a bundle has one table, whatever `tableName` says.
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
