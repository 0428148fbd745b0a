#include "probe/pass/start_up.h"

#include "probe/pass/discovery.h"
#include "probe/state/drive_table.h"
#include "probe/state/process_state.h"

enum {
  kSystemVersionSelector = 0x73797376,  // 'sysv'
  kApplicationSignature = 0x506F766B,   // 'Povk'
  kOldestSystemVersion = 0x1020
};

ICInstance gICInstance;

Boolean RunProbe() {
  Gestalt(kSystemVersionSelector, &gMySysVersion);
  if (gMySysVersion < kOldestSystemVersion) return false;

  bLittleEndianCPU = true;
  gSavedATADriveInfoArray =
      (SavedATADriveInfo *)NewPtr((Size)(kMaxSavedATADrives * sizeof(SavedATADriveInfo)));
  if (gSavedATADriveInfoArray == nullptr) return false;

  ICStart(&gICInstance, kApplicationSignature);
  GetApplicationPrefs();
  return true;
}

void GetApplicationPrefs() { SMARTPollingRoutine(nullptr, nullptr); }

static void ReleaseActiveDrive() {
  (*gActiveATADrive->smartInterface)->Release(gActiveATADrive->smartInterface);
  IODestroyPlugInInterface(gActiveATADrive->plugIn);
  IOObjectRelease(gActiveATADrive->service);
}

void SMARTPollingRoutine(void * /*unusedTimer*/, void * /*unusedData*/) {
  FindAllSMARTConnections();
  for (SInt16 i = 0; i < gSMARTDriveCount; i++) {
    gActiveATADrive = &gSavedATADriveInfoArray[i];
    ReleaseActiveDrive();
  }
}
