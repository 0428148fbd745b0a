// The table of drive records and its companions. A record is plain data:
// discovery.h says what fills it, report_lines.h what is printed of it.
#pragma once

#include <Carbon/Carbon.h>
#include <IOKit/IOCFPlugIn.h>
#include <IOKit/IOKitLib.h>
#include <IOKit/storage/ata/ATASMARTLib.h>

// The table is one block of fixed size, about 280 KB: no record ever moves, so that
// gActiveATADrive may point to one. A device beyond the table gets a failure line.
enum { kMaxSavedATADrives = 64 };

// Fields of the IDENTIFY DEVICE data: two characters a word, no NUL at the end.
enum {
  kIdentifyDataSize = 512,
  kSerialOffset = 20,
  kSerialSize = 20,
  kRevisionOffset = 46,
  kRevisionSize = 8
};

// A description can be three texts of 255 characters and the words between them.
enum { kInterfaceInfoSize = 1024 };

// What IOKitUtilsGetBDSName may write.
enum { kBSDPathSize = 1024 };

// What the drive was not asked is 0 in the record: such a block has no entries, and a condition
// that was not told is printed as not exceeded. A read that failed may have left part of its block.
struct SavedATADriveInfo {
  char bsdName[kBSDPathSize];
  char capacityLabel[256];  // an abbreviated label: a full name may need 266 bytes. Where the
                            // capacity is 0, that of the device before it in this record, if
                            // that one was not counted
  Str255 productNameP;      // productName with its length in front; nothing prints it
  char productName[256];
  char interfaceInfo[kInterfaceInfoSize];  // how it is attached, a length-prefixed string;
                                           // part of the record, though nothing prints it
  SInt64 capacityBytes;
  io_service_t service;  // of a counted drive; this and the next two are its own
  IOCFPlugInInterface **plugIn;
  IOATASMARTInterface **smartInterface;
  UInt8 identifyData[kIdentifyDataSize];  // serial and revision in reading order once fixed up
  ATASMARTData smartData;
  ATASMARTDataThresholds smartThresholds;
  Boolean thresholdExceeded;
};

// One block of kMaxSavedATADrives records, allocated at start-up, never freed.
// Records 0 to gSMARTDriveCount - 1 are the counted drives; the record after
// them is the work slot, which the device in hand is read into.
extern SavedATADriveInfo *gSavedATADriveInfoArray;
extern SInt16 gSMARTDriveCount;

// The record being worked on: null before the first drive, and after the pass the last
// counted one, whose objects are released by then.
extern SavedATADriveInfo *gActiveATADrive;
