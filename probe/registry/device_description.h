// What a drive is called, where its raw device is and how much it holds. interconnect.h says how it
// is attached.
#pragma once

#include <Carbon/Carbon.h>
#include <IOKit/IOKitLib.h>

// Each reads the registry around `entry`, which is borrowed. A property that is
// missing or unusable gives the empty text, the empty string or 0.

// Write the product name in ASCII, without the blanks at its ends: at most 256 bytes with the NUL,
// or with the length byte. The length-prefixed form belongs to the drive record, but is not
// printed.
void IOKitUtilsGetDeviceProductNameCStr(io_registry_entry_t entry, char *productName);
void IOKitUtilsGetDeviceProductNamePStr(io_registry_entry_t entry, StringPtr productName);

// Writes the path of the raw device, "/dev/r" and the BSD name: at most 1,024 bytes with the NUL. A
// name that does not fit or is not ASCII gives "/dev/r".
void IOKitUtilsGetBDSName(io_registry_entry_t entry, char *bsdName);

// Stores the capacity in bytes. It zeroes the output and then stores the number at its start, in
// the number's own type.
void IOKitUtilsGetDeviceSizeInBytes(io_registry_entry_t entry, SInt64 *capacityBytes);
