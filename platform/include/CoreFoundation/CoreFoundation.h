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

void CFRelease(CFTypeRef object);
CFTypeID CFGetTypeID(CFTypeRef object);

CFTypeID CFStringGetTypeID(void);
CFTypeID CFNumberGetTypeID(void);
CFTypeID CFDataGetTypeID(void);
CFTypeID CFDictionaryGetTypeID(void);

Boolean CFStringGetCString(CFStringRef string, char *buffer, CFIndex bufferSize,
                           CFStringEncoding encoding);
CFStringEncoding CFStringGetSystemEncoding(void);
CFStringRef CFStringCreateFromExternalRepresentation(CFAllocatorRef allocator, CFDataRef data,
                                                     CFStringEncoding encoding);

CFNumberType CFNumberGetType(CFNumberRef number);
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType type, void *value);

CFIndex CFDataGetLength(CFDataRef data);
void CFDataGetBytes(CFDataRef data, CFRange range, UInt8 *buffer);

const void *CFDictionaryGetValue(CFDictionaryRef dictionary, const void *key);
Boolean CFDictionaryGetValueIfPresent(CFDictionaryRef dictionary, const void *key,
                                      const void **value);

CFBundleRef CFBundleGetMainBundle(void);
CFStringRef CFBundleCopyLocalizedString(CFBundleRef bundle, CFStringRef key, CFStringRef value,
                                        CFStringRef tableName);

CFUUIDRef CFUUIDGetConstantUUIDWithBytes(CFAllocatorRef allocator, UInt8 byte0, UInt8 byte1,
                                         UInt8 byte2, UInt8 byte3, UInt8 byte4, UInt8 byte5,
                                         UInt8 byte6, UInt8 byte7, UInt8 byte8, UInt8 byte9,
                                         UInt8 byte10, UInt8 byte11, UInt8 byte12, UInt8 byte13,
                                         UInt8 byte14, UInt8 byte15);
CFUUIDBytes CFUUIDGetUUIDBytes(CFUUIDRef uuid);

}  // extern "C"
