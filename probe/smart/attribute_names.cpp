#include "probe/smart/attribute_names.h"

#include <cstring>

#include "probe/state/drive_table.h"

// The no-break space of the system's 8-bit character set. It is pasted between
// literals, so that no letter after it is read as part of the escape.
#define NBSP "\xCA"

struct AttribNameRow {
  UInt8 attribId;
  const char *name;
  const char *maxtorName;  // null: the same
};

static const AttribNameRow kAttribNames[] = {
    {1, "Raw Read Error Rate", nullptr},
    {2, "Throughput Performance", nullptr},
    {3, "Spin-up Time", nullptr},
    {4, "Start/Stop Count", nullptr},
    {5, "Reallocated Sector Count", nullptr},
    {6, "Read Channel Margin", nullptr},
    {7, "Seek Error Rate", nullptr},
    {8, "Seek Time Performance", nullptr},
    {9, "Power On Hours Count", nullptr},
    {10, "Spin Retry Count", nullptr},
    {11, "Calibration Retry Count", nullptr},
    {12, "Power Cycle Count", nullptr},
    {13, "Read Soft Error Rate", nullptr},
    {189, "High Fly Writes", nullptr},
    {190, "Airflow Temperature", nullptr},
    {191, "G-Sense Error Rate", nullptr},
    {192, "Power-Off Retraction Count", "Emergency" NBSP "Retract" NBSP "Cycles"},
    {193, "Load/Unload Cycle Count", nullptr},
    {194, "Temperature", nullptr},
    {195, "On" NBSP "The" NBSP "Fly" NBSP "Error" NBSP "Rate", nullptr},
    {196, "Offline Reallocation Event Count", nullptr},
    {197, "Current Pending Sector", "Probational" NBSP "Sector" NBSP "Count"},
    {198, "Uncorrectable Sectors Count", nullptr},
    {199, "CRC Error Count", nullptr},
    {200, "Write Error Count", nullptr},
    {201, "Off" NBSP "Track" NBSP "Errors", nullptr},
    {202, "TA Increase Count", "Data Address Mark Errors"},
    {203, "Run Out Cancel", "ECC Errors"},
    {204, "Shock Count Write Operation", "Soft ECC Correction"},
    {205, "Shock Rate Write Operation", "Thermal Asperity Rate"},
    {206, "Flying Height Measurement", nullptr},
    {207, "Spin High Current", nullptr},
    {208, "Spin Buzz", nullptr},
    {209, "Offline Seek Performnce", nullptr},  // readers know it by this spelling
    {220, "Disk Shift", nullptr},
    {221, "G-Sense Error Rate", nullptr},
    {222, "Loaded Hours", nullptr},
    {223, "Load Retry Count", nullptr},
    {224, "Load Friction", nullptr},
    {225, "Load Cycle Count", nullptr},
    {226, "Load-in Time", nullptr},
    {227, "Torq-amp Count", nullptr},
    {228, "Power-off Retraction Count", nullptr},
    {230, "Head Amplitude", nullptr},
    {231, "Temperature", nullptr},
    {240, "Head Flying Hours", nullptr},
    {250, "Read Error Retry Rate", nullptr},
};

void GetSmartAttribName(UInt8 attribId, Boolean isMaxtor, char *name) {
  for (const AttribNameRow &row : kAttribNames) {
    if (row.attribId != attribId) continue;
    strcpy(name, isMaxtor && row.maxtorName != nullptr ? row.maxtorName : row.name);
    return;
  }
  strcpy(name, "Unknown Attribute");
}

Boolean IsMaxtorDrive() {
  const char *productName = gActiveATADrive->productName;
  return strstr(productName, "MAXTOR") != nullptr || strstr(productName, "Maxtor") != nullptr;
}
