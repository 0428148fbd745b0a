// The description of how a drive is attached: its bus and its address there.
// Nothing else about the drive is looked up here.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <IOKit/IOKitLib.h>

// Composes the description of `entry`, which is borrowed, in `info` and turns it
// into a length-prefixed string there: a length byte and at most 255 characters.
// The text before that takes up to 777 bytes with its NUL. What the registry does
// not tell, or not in a usable form, leaves a shorter description or none. It belongs
// to the drive record, though nothing prints it.
void IOKitUtilsGetDeviceInterfaceInfo(io_registry_entry_t entry, char *info);
