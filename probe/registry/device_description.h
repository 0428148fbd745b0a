// What a drive is called, where its raw device is and how much it holds. How it is
// attached is in interconnect.h.
#pragma once

#include <Carbon/Carbon.h>
#include <IOKit/IOKitLib.h>

// Each reads the registry around `entry`, which is borrowed. A property that is
// missing or unusable gives the empty text, the empty string or 0.

// The product name without the blanks at its ends, ASCII: at most 256 bytes with
// the NUL, or with the length byte. The length-prefixed form belongs to the drive
// record, though nothing prints it.
void IOKitUtilsGetDeviceProductNameCStr(io_registry_entry_t entry, char *productName);
void IOKitUtilsGetDeviceProductNamePStr(io_registry_entry_t entry, StringPtr productName);

// The path of the raw device, "/dev/r" and the BSD name: at most 1,024 bytes with
// the NUL. A name that does not fit or is not ASCII gives "/dev/r".
void IOKitUtilsGetBDSName(io_registry_entry_t entry, char *bsdName);

// The capacity in bytes. The number is stored in its own type at the start of the
// zeroed output.
void IOKitUtilsGetDeviceSizeInBytes(io_registry_entry_t entry, SInt64 *capacityBytes);
