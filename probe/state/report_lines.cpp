#include "probe/state/report_lines.h"

#include <cstdio>
#include <cstring>

static const char kSeparator[] = ":::";

// The text of a field of IDENTIFY data ends at a NUL, or with the field.
static void CopyFieldToCStr(const UInt8 *field, size_t fieldSize, char *text) {
  memcpy(text, field, fieldSize);
  text[fieldSize] = '\0';
}

void PrintStartLine(const SavedATADriveInfo *drive) {
  char revision[kRevisionSize + 1];
  char serial[kSerialSize + 1];
  CopyFieldToCStr(drive->identifyData + kRevisionOffset, kRevisionSize, revision);
  CopyFieldToCStr(drive->identifyData + kSerialOffset, kSerialSize, serial);
  printf("%s%s%s%s%s%s%s%s%s%s\n", "SmartDeviceStart:::", drive->bsdName, kSeparator,
         drive->productName, kSeparator, revision, kSeparator, drive->capacityLabel, kSeparator,
         serial);
}

void PrintAttributeLine(const char *attribId, const char *attribName, UInt16 flags,
                        const char *currentValue, const char *threshold, const char *status) {
  printf("%s%s%s%s%s%u%s%s%s%s%s%s\n", "SMARTStatus:::", attribId, kSeparator, attribName,
         kSeparator, (unsigned)flags, kSeparator, currentValue, kSeparator, threshold, kSeparator,
         status);
}

void PrintEndLine(const SavedATADriveInfo *drive) {
  printf("%s%s%s%s\n", "SmartDeviceEnd:::", drive->bsdName, kSeparator,
         drive->thresholdExceeded ? "True" : "False");
}

void PrintFailureLine(const char *bsdName) {
  printf("%s%s%s%d\n", "GetSMARTFailed:", bsdName, ":", 0);
}
