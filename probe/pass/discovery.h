// Discovery: which devices are drives, what is asked of each, and in what order it
// is reported. Texts are made in text/ and registry/, blocks are read in smart/, and
// lines are printed by report_lines.
#pragma once

#include <IOKit/IOKitLib.h>

// Clears the drive table, which start-up has allocated, then reads and reports
// every ATA device and after them, on a little-endian processor, every AHCI device.
// When kMaxSavedATADrives drives are counted, each further device gets its failure
// line and is not opened. The objects of the counted drives stay open for the release
// loop. A drive whose S.M.A.R.T. could be enabled is reported and counted whatever fails
// after that; one that refuses to be enabled gets no line, and its plug-in and interface
// are left open. Where the set of ATA devices cannot be had there is no AHCI pass either; an
// empty set is no failure.
void FindAllSMARTConnections();

// Works on `service`, which is not 0, and on every further service of `iterator`.
// `isAHCI` tells the pass: only ATA devices are asked for their features first.
// Borrows both handles; those of drives that are not counted are left open.
void IterateTheseIOObjects(io_service_t service, io_iterator_t iterator, Boolean isAHCI);
