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
  std::string name;  // the kernel's: sda
  fs::path folder;   // its folder in sysfs
  bool isAHCI = false;
  std::optional<platform::Block> identify;  // as far as the kernel keeps it
};

// "ata12" is `prefix` "ata" with a number.
bool IsNumbered(std::string_view name, std::string_view prefix) {
  return name.size() > prefix.size() && name.starts_with(prefix) &&
         name.find_first_not_of("0123456789", prefix.size()) == std::string_view::npos;
}

// The folder of the SCSI host that a disk is attached to, in which its own lies:
// .../ata1/host0/target0:0:0/... or .../usb2/2-1/2-1:1.0/host6/target6:0:0/... Empty: there is
// none.
fs::path HostOf(const fs::path& sysfs, fs::path folder) {
  while (folder != sysfs && !IsNumbered(folder.filename().native(), "host")) {
    folder = folder.parent_path();
  }
  return folder == sysfs ? fs::path() : folder;
}

// The driver of an AHCI port has it in its name. Elsewhere than on a libata port it is no matter.
bool IsAHCI(const fs::path& host) {
  if (!IsNumbered(host.parent_path().filename().native(), "ata")) return false;
  const std::string driver = ReadText(host / "scsi_host" / host.filename() / "proc_name");
  return driver.find("ahci") != std::string::npos;
}

// Direct access, or the same with zones that the host manages. Others, such as optical
// drives, are block devices too.
bool IsDisk(const fs::path& device) {
  const std::string type = ReadText(device / "type");
  return type == "0" || type == "20";
}

std::optional<AtaDisk> ReadDisk(const fs::path& sysfs, const fs::path& link) {
  std::error_code error;
  const fs::path folder = fs::canonical(link, error);
  if (error) return std::nullopt;
  const fs::path host = HostOf(sysfs, folder);
  const fs::path device = folder / "device";
  if (host.empty() || !IsDisk(device)) return std::nullopt;
  const auto page = ReadFile(device / "vpd_pg89");
  const auto identify = page ? FindIdentifyData(*page) : std::nullopt;
  if (!identify && ReadText(device / "vendor") != "ATA") return std::nullopt;
  return {{link.filename(), folder, IsAHCI(host), identify}};
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

// Where the kernel keeps no IDENTIFY data it has the first 16 characters of the model.
std::string Model(const AtaDisk& disk) {
  if (disk.identify) return ModelNumber(*disk.identify);
  return base::PrintableASCII(ReadText(disk.folder / "device" / "model"));
}

SInt32 AtaFeatures(const AtaDisk& disk) {
  return disk.identify && LacksSMART(*disk.identify) ? 0 : kIOATAFeatureSMART;
}

Property Text(std::string text) { return {std::move(text)}; }

// In bytes, a 64-bit number whatever its value: the probe takes the bytes of a smaller one in the
// processor's order. The attribute is in sectors of 512 bytes, whatever those of the disk.
std::optional<platform::Number> ReadSize(const AtaDisk& disk) {
  constexpr std::uint64_t kSectorSize = 512;
  constexpr std::uint64_t kMaxSectors = std::numeric_limits<std::int64_t>::max() / kSectorSize;
  const auto sectors = ReadNumber(disk.folder / "size");
  if (!sectors || *sectors > kMaxSectors) return std::nullopt;
  return platform::Number{kCFNumberSInt64Type, *sectors * kSectorSize};
}

Entry MakeMedium(const AtaDisk& disk, const std::string& model) {
  Entry medium{model + " Media", "IOMedia", {}, {}, {}};
  medium.properties.emplace("BSD Name", Text(base::PrintableASCII(disk.name)));
  if (const auto size = ReadSize(disk)) medium.properties.emplace("Size", Property{*size});
  return medium;
}

Entry MakeDevice(const AtaDisk& disk, const fs::path& dev) {
  const std::string model = Model(disk);
  const SInt32 features = AtaFeatures(disk);
  const char* name = disk.isAHCI ? "IOAHCIBlockStorageDevice" : "IOATABlockStorageDevice";
  const Property characteristics = {Dictionary{
      {"Product Name", Text(model)}, {"ATA Features", {platform::IntegerNumber(features)}}}};
  Entry device{name, name, {{"Device Characteristics", characteristics}}, {}, {}};
  device.children.push_back(MakeMedium(disk, model));
  if (disk.isAHCI || features != 0) {
    device.drive = MakeAtaDrive(dev / disk.name, ReadDeviceNumber(disk.folder / "dev"));
  }
  return device;
}

}  // namespace

platform::Machine ReadLinuxMachine(const fs::path& sysfs, const fs::path& dev) {
  Entry root{"Root", "IORegistryEntry", {}, {}, {}};
  for (const AtaDisk& disk : ReadAtaDisks(sysfs)) root.children.push_back(MakeDevice(disk, dev));
  platform::Machine machine;
  machine.systemVersion = kSystemVersion;
  machine.roots.push_back(std::move(root));
  return machine;
}

}  // namespace machines
