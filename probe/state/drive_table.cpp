#include "probe/state/drive_table.h"

SavedATADriveInfo *gSavedATADriveInfoArray;
SInt16 gSMARTDriveCount;
SavedATADriveInfo *gActiveATADrive;
