#include "probe/pass/discovery.h"

#include <cstring>

#include "probe/registry/device_description.h"
#include "probe/registry/interconnect.h"
#include "probe/registry/property_lookups.h"
#include "probe/smart/threshold_rows.h"
#include "probe/state/drive_table.h"
#include "probe/state/process_state.h"
#include "probe/state/report_lines.h"
#include "probe/text/byte_count_labels.h"
#include "probe/text/value_to_text.h"

enum { kLastVersionWithoutIdentify = 0x102F };

// The property dictionary is left to the end of the process, as are the iterators. A run is too
// short for them to matter.
static Boolean HasSMARTFeature(io_service_t service) {
  CFMutableDictionaryRef properties = nullptr;
  if (IORegistryEntryCreateCFProperties(service, &properties, kCFAllocatorDefault, 0) !=
      kIOReturnSuccess) {
    return false;
  }
  const void *characteristics = nullptr;
  if (!CFDictionaryGetValueIfPresent(properties, CFSTR("Device Characteristics"),
                                     &characteristics) ||
      CFGetTypeID(characteristics) != CFDictionaryGetTypeID()) {
    return false;
  }
  const void *number = nullptr;
  if (!CFDictionaryGetValueIfPresent((CFDictionaryRef)characteristics, CFSTR("ATA Features"),
                                     &number) ||
      CFGetTypeID(number) != CFNumberGetTypeID()) {
    return false;
  }
  SInt32 features = 0;  // where a long has 64 bits, kCFNumberLongType would write beyond it
  if (!CFNumberGetValue((CFNumberRef)number, kCFNumberSInt32Type, &features)) return false;
  return (features & kIOATAFeatureSMART) != 0;
}

// A capacity of 0 leaves the label that the slot holds.
static void DescribeDevice(io_service_t service, SavedATADriveInfo *drive) {
  IOKitUtilsGetDeviceProductNamePStr(service, drive->productNameP);
  IOKitUtilsGetDeviceProductNameCStr(service, drive->productName);
  IOKitUtilsGetDeviceInterfaceInfo(service, drive->interfaceInfo);
  IOKitUtilsGetBDSName(service, drive->bsdName);
  IOKitUtilsGetDeviceSizeInBytes(service, &drive->capacityBytes);
  if (drive->capacityBytes != 0) {
    BytesSInt64ToCStrWLabel(drive->capacityBytes, drive->capacityLabel, false);
  }
}

// The slot may still hold the interface of a device that failed before: it is
// cleared first, so that only an interface of this device can be called.
static Boolean GetSMARTInterface(SavedATADriveInfo *drive) {
  drive->smartInterface = nullptr;
  HRESULT result = (*drive->plugIn)
                       ->QueryInterface(drive->plugIn, CFUUIDGetUUIDBytes(kIOATASMARTInterfaceID),
                                        (LPVOID *)&drive->smartInterface);
  if (result == S_OK && drive->smartInterface != nullptr) return true;

  IODestroyPlugInInterface(drive->plugIn);
  drive->plugIn = nullptr;
  return false;
}

static Boolean OpenUserClient(io_service_t service, SavedATADriveInfo *drive) {
  SInt32 score = 0;
  if (IOCreatePlugInInterfaceForService(service, kIOATASMARTUserClientTypeID,
                                        kIOCFPlugInInterfaceID, &drive->plugIn,
                                        &score) != kIOReturnSuccess) {
    return false;
  }
  return GetSMARTInterface(drive);
}

// False if S.M.A.R.T. cannot be enabled. If a read fails after that, it has left none, a part or
// all of its block, and the drive is reported with what there is.
static Boolean ReadSMARTState(SavedATADriveInfo *drive) {
  IOATASMARTInterface **smart = drive->smartInterface;
  if ((*smart)->SMARTEnableDisableOperations(smart, true) != kIOReturnSuccess) return false;

  (*smart)->SMARTReturnStatus(smart, &drive->thresholdExceeded);
  if ((*smart)->SMARTReadData(smart, &drive->smartData) == kIOReturnSuccess) {
    (*smart)->SMARTReadDataThresholds(smart, &drive->smartThresholds);
  }
  if (gMySysVersion > kLastVersionWithoutIdentify) {
    UInt32 actualSize = 0;
    (*smart)->GetATAIdentifyData(smart, drive->identifyData, kIdentifyDataSize, &actualSize);
  }
  return true;
}

// Puts a text field of the IDENTIFY data into reading order. If the registry has the text, it takes
// that. Otherwise it exchanges the two characters of each of the drive's words.
static void FixUpIdentifyField(io_service_t service, CFStringRef key, UInt8 *field, size_t size) {
  char text[256];
  IOKitGetThisKeyCStr(service, key, text);
  if (text[0] != '\0') {
    size_t length = strlen(text);
    memset(field, 0, size);
    memcpy(field, text, length < size ? length : size);
    return;
  }
  for (size_t i = 0; i < size; i += 2) ReverseBytesCheck(field + i, 2);
}

static void FixUpIdentifyData(io_service_t service, SavedATADriveInfo *drive) {
  if (!bLittleEndianCPU) return;
  FixUpIdentifyField(service, CFSTR("Serial Number"), drive->identifyData + kSerialOffset,
                     kSerialSize);
  FixUpIdentifyField(service, CFSTR("Revision"), drive->identifyData + kRevisionOffset,
                     kRevisionSize);
}

static void ReportDrive(SavedATADriveInfo *drive) {
  gActiveATADrive = drive;
  PrintStartLine(drive);
  SyncThresholdData();
  PrintEndLine(drive);
}

// The table is full, so there is no work slot and nothing is opened. Without a line the device
// would seem not to be there.
static void ReportDeviceBeyondTable(io_service_t service) {
  char bsdName[kBSDPathSize];
  IOKitUtilsGetBDSName(service, bsdName);
  PrintFailureLine(bsdName);
}

static void ExamineDevice(io_service_t service, Boolean isAHCI) {
  if (!isAHCI && !HasSMARTFeature(service)) return;
  if (gSMARTDriveCount == kMaxSavedATADrives) {
    ReportDeviceBeyondTable(service);
    return;
  }

  SavedATADriveInfo *drive = &gSavedATADriveInfoArray[gSMARTDriveCount];
  DescribeDevice(service, drive);
  if (!OpenUserClient(service, drive)) {
    PrintFailureLine(drive->bsdName);
    return;
  }
  if (!ReadSMARTState(drive)) return;

  FixUpIdentifyData(service, drive);
  ReportDrive(drive);
  drive->service = service;
  gSMARTDriveCount++;
}

void IterateTheseIOObjects(io_service_t service, io_iterator_t iterator, Boolean isAHCI) {
  while (service != 0) {
    ExamineDevice(service, isAHCI);
    service = IOIteratorNext(iterator);
  }
}

// False if the devices cannot be listed. An empty list is no failure.
static Boolean ExamineMatchingDevices(CFMutableDictionaryRef matching, Boolean isAHCI) {
  io_iterator_t iterator = 0;
  if (matching == nullptr ||
      IOServiceGetMatchingServices(kIOMasterPortDefault, matching, &iterator) != kIOReturnSuccess) {
    return false;
  }
  io_service_t first = IOIteratorNext(iterator);
  if (first != 0) IterateTheseIOObjects(first, iterator, isAHCI);
  return true;
}

void FindAllSMARTConnections() {
  gSMARTDriveCount = 0;
  BlockZero(gSavedATADriveInfoArray, (Size)(kMaxSavedATADrives * sizeof(SavedATADriveInfo)));

  if (!ExamineMatchingDevices(IOServiceNameMatching("IOATABlockStorageDevice"), false)) return;
  if (!bLittleEndianCPU) return;
  ExamineMatchingDevices(IOServiceMatching("IOAHCIBlockStorageDevice"), true);
}
