#include "machines/linux/sysfs_machine.h"

#include <IOKit/storage/ata/ATASMARTLib.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <utility>

#include "base/printable_text.h"
#include "machines/linux/ata_disks.h"
#include "machines/linux/ata_drive.h"
#include "machines/linux/identify_data.h"
#include "machines/linux/sysfs_files.h"

namespace machines {
namespace {

namespace fs = std::filesystem;
using platform::Dictionary;
using platform::Entry;
using platform::Property;

constexpr SInt32 kSystemVersion = 0x1068;  // 10.6.8

bool IsAHCI(const AtaDisk& disk) {
  return disk.isOnAtaPort && disk.hostDriver.find("ahci") != std::string::npos;
}

// Where the kernel keeps no IDENTIFY data it has the first 16 characters of the model.
std::string Model(const AtaDisk& disk) {
  if (disk.identify) return ModelNumber(*disk.identify);
  return base::PrintableASCII(ReadText(disk.folder / "device" / "model"));
}

SInt32 AtaFeatures(const AtaDisk& disk) {
  return disk.identify && LacksSMART(*disk.identify) ? 0 : kIOATAFeatureSMART;
}

// An AHCI port is serial. Of another port the drive's IDENTIFY data tell, or the name of
// the driver, which begins so where all its ports are serial.
bool IsSerial(const AtaDisk& disk) {
  return IsAHCI(disk) || (disk.identify && IsSerialATA(*disk.identify)) ||
         disk.hostDriver.starts_with("sata_");
}

Property Text(std::string text) { return {std::move(text)}; }
Property Integer(std::int64_t value) { return {platform::IntegerNumber(value)}; }

// In bytes; the attribute is in sectors of 512 bytes, whatever those of the disk.
std::optional<std::int64_t> ReadSize(const AtaDisk& disk) {
  constexpr std::int64_t kSectorSize = 512;
  constexpr std::int64_t kMaxSectors = std::numeric_limits<std::int64_t>::max() / kSectorSize;
  const auto sectors = ReadNumber(disk.folder / "size");
  if (!sectors || *sectors > std::uint64_t{kMaxSectors}) return std::nullopt;
  return static_cast<std::int64_t>(*sectors) * kSectorSize;
}

Entry MakeMedium(const AtaDisk& disk, const std::string& model) {
  Entry medium{model + " Media", "IOMedia", {}, {}, nullptr};
  medium.properties.push_back({"BSD Name", Text(base::PrintableASCII(disk.name))});
  if (const auto size = ReadSize(disk)) medium.properties.push_back({"Size", Integer(*size)});
  return medium;
}

Entry MakeDevice(const AtaDisk& disk, const fs::path& dev) {
  const std::string model = Model(disk);
  const char* name = IsAHCI(disk) ? "IOAHCIBlockStorageDevice" : "IOATABlockStorageDevice";
  Entry device{name, name, {}, {}, nullptr};
  device.properties = {
      {"Device Characteristics",
       {Dictionary{{"Product Name", Text(model)}, {"ATA Features", Integer(AtaFeatures(disk))}}}},
      {"Protocol Characteristics",
       {Dictionary{
           {"Physical Interconnect", Text(IsSerial(disk) ? "SATA" : "ATA")},
           {"Physical Interconnect Location", Text(disk.isOnUSB ? "External" : "Internal")}}}}};
  device.children.push_back(MakeMedium(disk, model));
  if (IsAHCI(disk) || AtaFeatures(disk) != 0) {
    device.drive = MakeAtaDrive(dev / disk.name, ReadDeviceNumber(disk.folder / "dev"));
  }
  return device;
}

const char* PortClass(const AtaDisk& disk) {
  if (!disk.isOnAtaPort) return "IOSCSIController";
  return IsAHCI(disk) ? "IOAHCIPort" : "IOATAController";
}

// An entry of its own for each disk, even where two share a port: disks come in the order
// of their names, whatever their ports.
Entry MakePort(const AtaDisk& disk, const fs::path& dev) {
  Entry port{disk.port, PortClass(disk), {}, {}, nullptr};
  port.children.push_back(MakeDevice(disk, dev));
  return port;
}

}  // namespace

platform::Machine ReadLinuxMachine(const fs::path& sysfs, const fs::path& dev) {
  Entry root{"Root", "IORegistryEntry", {}, {}, nullptr};
  for (const AtaDisk& disk : FindAtaDisks(sysfs)) root.children.push_back(MakePort(disk, dev));
  platform::Machine machine;
  machine.systemVersion = kSystemVersion;
  machine.roots.push_back(std::move(root));
  return machine;
}

}  // namespace machines
