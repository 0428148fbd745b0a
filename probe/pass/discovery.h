// Discovery: which devices are drives, what each is asked, and in what order they are reported.
// text/ and registry/ make the texts, smart/ reads the blocks, and report_lines prints the lines.
#pragma once

#include <IOKit/IOKitLib.h>

// Clears the drive table, which start-up has allocated. Then reads and reports every ATA device
// with the S.M.A.R.T. feature and after them, on a little-endian processor, every AHCI device. If
// the ATA devices cannot be listed, there is no AHCI pass either. An empty list is no failure.
//
// A device that cannot be opened gets its failure line. When kMaxSavedATADrives drives are counted,
// each further such device gets its failure line and is not opened. A drive whose S.M.A.R.T. could
// be enabled is reported and counted, whatever fails after that. The objects of the counted drives
// stay open for the release loop. A drive that refuses to be enabled gets no line, and its plug-in
// and interface are left open.
void FindAllSMARTConnections();

// Examines `service`, which is not 0, and every further service of `iterator`. If `isAHCI` is not
// set, a device is examined only if it has the S.M.A.R.T. feature. Releases no handle. The services
// of counted drives are kept in their records, and all other handles are left open.
void IterateTheseIOObjects(io_service_t service, io_iterator_t iterator, Boolean isAHCI);
