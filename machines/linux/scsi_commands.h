// Sends SCSI commands through the SCSI library. scsi_drive.cpp and scsi_self_tester.cpp decide
// which. Each is sent once, and once more after a unit attention, which only tells of a reset.
#pragma once

#include <scsi/sg_lib.h>

#include <cstdint>

#include "platform/machine.h"

namespace machines {

// Removes the two variables that change the library from the environment, so that a run is the same
// everywhere.
void ClearLibraryEnvironment();

// What `send` returns, a status of the library, or what it returns the second time.
template <typename Send>
int SendScsi(Send send) {
  ClearLibraryEnvironment();
  const int status = send();
  return status == SG_LIB_CAT_UNIT_ATTENTION ? send() : status;
}

// Whether the disk does not know the command, or not in this form.
bool IsScsiRefusal(int status);

// LOG SENSE of the open `node`. Leaves in `page` the page with its header, as much of it as has
// come and at most a block. Returns the library's status, which is 0 after a success alone.
int ReadLogPage(int node, std::uint8_t code, platform::Data& page);

// The sense data that REQUEST SENSE gives. Empty if the disk does not answer.
platform::Data ReadSense(int node);

}  // namespace machines
