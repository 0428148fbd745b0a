// The table of drive records, the number of counted drives and the active drive. A record is plain
// data: discovery.h says what fills it, and report_lines.h prints parts of it.
#pragma once

#include <Carbon/Carbon.h>
#include <IOKit/IOCFPlugIn.h>
#include <IOKit/IOKitLib.h>
#include <IOKit/storage/ata/ATASMARTLib.h>

// The table is one block of fixed size, about 280 KB. No record ever moves, so gActiveATADrive may
// point to one. A device for which the table has no record gets a failure line.
enum { kMaxSavedATADrives = 64 };

// Fields of the IDENTIFY DEVICE data: two characters a word, no NUL at the end.
enum {
  kIdentifyDataSize = 512,
  kSerialOffset = 20,
  kSerialSize = 20,
  kRevisionOffset = 46,
  kRevisionSize = 8
};

// Room for a description of three texts of 255 characters and the words between them.
enum { kInterfaceInfoSize = 1024 };

// The most bytes that IOKitUtilsGetBDSName writes.
enum { kBSDPathSize = 1024 };

// An answer that did not come is 0 in the record: a block of zeros has no entries, and a condition
// of 0 is printed as not exceeded. A read that failed may have left part of its block.
struct SavedATADriveInfo {
  char bsdName[kBSDPathSize];
  char capacityLabel[256];  // an abbreviated label: a full name may need 266 bytes. A capacity of
                            // 0 sets none: a label then stays from the device before, if that
                            // used this record too and was not counted
  Str255 productNameP;      // productName with its length in front; nothing prints it
  char productName[256];
  char interfaceInfo[kInterfaceInfoSize];  // how the drive is attached, a length-prefixed string;
                                           // nothing prints it
  SInt64 capacityBytes;
  io_service_t service;  // set for a counted drive, whose record owns this and the next two
  IOCFPlugInInterface **plugIn;
  IOATASMARTInterface **smartInterface;
  UInt8 identifyData[kIdentifyDataSize];  // FixUpIdentifyData puts serial and revision in order
  ATASMARTData smartData;
  ATASMARTDataThresholds smartThresholds;
  Boolean thresholdExceeded;
};

// One block of kMaxSavedATADrives records, allocated at start-up and never freed. Records 0 to
// gSMARTDriveCount - 1 are the counted drives. The record after them is the work slot, into which
// the current device is read.
extern SavedATADriveInfo *gSavedATADriveInfoArray;
extern SInt16 gSMARTDriveCount;

// The record of the current drive. Null before the first drive. After the pass it is the last
// counted drive, whose objects are released by then.
extern SavedATADriveInfo *gActiveATADrive;
