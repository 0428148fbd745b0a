#include "machines/linux/sysfs_machine.h"

#include <IOKit/storage/ata/ATASMARTLib.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "base/printable_text.h"
#include "machines/linux/ata_drive.h"
#include "machines/linux/drive_blocks.h"
#include "machines/linux/sysfs_files.h"

namespace machines {
namespace {

namespace fs = std::filesystem;
using platform::Dictionary;
using platform::Entry;
using platform::Property;

struct AtaDisk {
  std::string name;              // the kernel's: sda
  std::filesystem::path folder;  // its folder in sysfs
  std::string port;  // what it is attached to: a libata port, ata1, or a SCSI host, host6
  bool isOnAtaPort = false;
  bool isOnUSB = false;
  std::string hostDriver;  // the kernel's driver of the port or host; empty: not known
  std::optional<platform::Drive::Block> identify;  // as far as the kernel keeps it
};

// What a device is attached to: the folders of its path that tell.
struct Attachment {
  std::string ataPort;
  fs::path host;  // the folder of its SCSI host; empty: it has none
  bool isOnUSB = false;
};

// "ata12" is `prefix` "ata" with a number.
bool IsNumbered(std::string_view name, std::string_view prefix) {
  return name.size() > prefix.size() && name.starts_with(prefix) &&
         name.find_first_not_of("0123456789", prefix.size()) == std::string_view::npos;
}

// A device's folder lies in that of what it is attached to: .../ata1/host0/target0:0:0/...
// or .../usb2/2-1/2-1:1.0/host6/target6:0:0/...
Attachment AttachmentOf(const fs::path& sysfs, const fs::path& device) {
  Attachment attachment;
  fs::path folder = sysfs;
  for (const fs::path& part : device.lexically_relative(sysfs)) {
    folder /= part;
    if (IsNumbered(part.native(), "ata")) attachment.ataPort = part;
    if (IsNumbered(part.native(), "usb")) attachment.isOnUSB = true;
    if (IsNumbered(part.native(), "host")) attachment.host = folder;
  }
  return attachment;
}

// Direct access, or the same with zones that the host manages. Others, such as optical
// drives, are block devices too.
bool IsDisk(const fs::path& device) {
  const std::string type = ReadText(device / "type");
  return type == "0" || type == "20";
}

std::optional<AtaDisk> ReadDisk(const fs::path& sysfs, const fs::path& link) {
  std::error_code error;
  fs::path folder = fs::canonical(link, error);
  if (error) return std::nullopt;
  Attachment attachment = AttachmentOf(sysfs, folder);
  const fs::path device = folder / "device";
  if (attachment.host.empty() || !IsDisk(device)) return std::nullopt;
  const auto page = ReadFile(device / "vpd_pg89");
  const auto identify = page ? FindIdentifyData(*page) : std::nullopt;
  if (!identify && ReadText(device / "vendor") != "ATA") return std::nullopt;
  const std::string host = attachment.host.filename();
  const bool isOnAtaPort = !attachment.ataPort.empty();
  return {{link.filename(), std::move(folder), isOnAtaPort ? attachment.ataPort : host, isOnAtaPort,
           attachment.isOnUSB, ReadText(attachment.host / "scsi_host" / host / "proc_name"),
           identify}};
}

bool IsNamedBefore(const AtaDisk& one, const AtaDisk& other) {
  return std::pair(one.name.size(), one.name) < std::pair(other.name.size(), other.name);
}

// The SCSI disks that speak ATA, directly or behind a translation layer: those that the
// kernel says are of the vendor "ATA", as libata and most layers do, and those whose layer
// hands out IDENTIFY DEVICE data. In the kernel's order of naming: sda to sdz, then sdaa.
// A disk whose folder cannot be read is left out; none is found where `sysfs` itself cannot be.
std::vector<AtaDisk> ReadAtaDisks(const fs::path& sysfs) {
  std::vector<AtaDisk> disks;
  std::error_code error;
  const fs::path root = fs::canonical(sysfs, error);
  if (error) return disks;
  fs::directory_iterator link(root / "block", error);
  for (; !error && link != fs::directory_iterator(); link.increment(error)) {
    if (std::optional<AtaDisk> disk = ReadDisk(root, *link)) disks.push_back(std::move(*disk));
  }
  std::ranges::sort(disks, IsNamedBefore);
  return disks;
}

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
  for (const AtaDisk& disk : ReadAtaDisks(sysfs)) root.children.push_back(MakePort(disk, dev));
  platform::Machine machine;
  machine.systemVersion = kSystemVersion;
  machine.roots.push_back(std::move(root));
  return machine;
}

}  // namespace machines
