#include "machines/linux/sysfs_machine.h"

#include <IOKit/storage/ata/ATASMARTLib.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "base/printable_text.h"
#include "machines/disks/disk_entries.h"
#include "machines/disks/drive_blocks.h"
#include "machines/linux/ata_drive.h"
#include "machines/linux/sysfs_files.h"
#include "machines/linux/udev_database.h"

namespace machines {
namespace {

namespace fs = std::filesystem;
using platform::Dictionary;
using platform::DriveAnswers;
using platform::Entry;
using platform::Property;

enum class Kind { kAHCI, kATA, kOther };

struct Disk {
  std::string name;  // the kernel's: sda
  fs::path folder;   // its folder in sysfs
  Kind kind = Kind::kOther;
  std::optional<platform::Block> identify = {};  // of an ATA disk, as far as the kernel keeps it
  bool isModelKnown = true;                      // false: the kernel knows the bridge's alone
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
  while (folder != sysfs && folder.has_relative_path()) {
    if (IsNumbered(folder.filename().native(), "host")) return folder;
    folder = folder.parent_path();
  }
  return {};
}

// The driver of an AHCI port has it in its name. Elsewhere than on a libata port it is no matter.
bool IsAHCI(const fs::path& host) {
  if (!IsNumbered(host.parent_path().filename().native(), "ata")) return false;
  const std::string driver = ReadText(host / "scsi_host" / host.filename() / "proc_name");
  return driver.find("ahci") != std::string::npos;
}

// The SCSI disks that speak ATA, directly or behind a translation layer: those that the
// kernel says are of the vendor "ATA", as libata and most layers do, those whose layer
// hands out IDENTIFY DEVICE data, and those that udev has asked.
void ReadKind(const fs::path& sysfs, Disk& disk) {
  const fs::path host = HostOf(sysfs, disk.folder);
  const fs::path device = disk.folder / "device";
  const std::string type = ReadText(device / "type");
  // Direct access, or the same with zones that the host manages.
  if (host.empty() || (type != "0" && type != "20")) return;
  if (const auto page = ReadFile(device / "vpd_pg89")) disk.identify = FindIdentifyData(*page);
  if (!disk.identify && ReadText(device / "vendor") != "ATA") {
    const auto number = ReadDeviceNumber(disk.folder / "dev");
    if (!number || !IsATAByUdev(*number)) return;
    disk.isModelKnown = false;
  }
  disk.kind = IsAHCI(host) ? Kind::kAHCI : Kind::kATA;
}

// What has hardware of its own, which sysfs has a link to, and is neither an optical nor a floppy
// drive, nor the boot code of a card, bare flash, or one of the paths to a disk of another name.
bool IsDisk(const std::string& name, const fs::path& folder) {
  constexpr const char* kOptical = "5";
  std::error_code error;
  return fs::exists(folder / "device", error) && ReadText(folder / "device" / "type") != kOptical &&
         !IsNumbered(name, "fd") && !IsNumbered(name, "sr") && !IsNumbered(name, "mtdblock") &&
         name.find("boot") == std::string::npos && ReadText(folder / "hidden") != "1";
}

std::optional<Disk> ReadDisk(const fs::path& sysfs, const fs::path& link) {
  std::error_code error;
  Disk disk{link.filename(), fs::canonical(link, error)};
  if (error || !IsDisk(disk.name, disk.folder)) return std::nullopt;
  ReadKind(sysfs, disk);
  return disk;
}

bool IsNamedBefore(const Disk& one, const Disk& other) {
  return std::pair(one.name.size(), one.name) < std::pair(other.name.size(), other.name);
}

// In the kernel's order of naming: sda to sdz, then sdaa. A disk whose folder cannot be read is
// left out; none is found where `sysfs` itself cannot be.
std::vector<Disk> ReadDisks(const fs::path& sysfs) {
  std::vector<Disk> disks;
  std::error_code error;
  const fs::path root = fs::canonical(sysfs, error);
  fs::directory_iterator link(root / "block", error);
  for (; !error && link != fs::directory_iterator(); link.increment(error)) {
    if (std::optional<Disk> disk = ReadDisk(root, *link)) disks.push_back(std::move(*disk));
  }
  if (error) throw std::system_error(error, sysfs / "block");
  std::ranges::sort(disks, IsNamedBefore);
  return disks;
}

SInt32 AtaFeatures(const Disk& disk) {
  return disk.identify && LacksSMART(*disk.identify) ? 0 : kIOATAFeatureSMART;
}

// A drive that the probe would turn away is not asked.
bool IsAsked(const Disk& disk) {
  return disk.kind == Kind::kAHCI || (disk.kind == Kind::kATA && AtaFeatures(disk) != 0);
}

// The drives that are asked, all when the answers of one are wanted for the first time.
class Drives {
 public:
  Drives(const std::vector<Disk>& disks, const fs::path& dev, Asking asking)
      : asking_(std::move(asking)) {
    for (const Disk& disk : disks) {
      if (!IsAsked(disk)) continue;
      names_.push_back(disk.name);
      drives_.push_back(MakeAtaDrive(
          {dev / disk.name, ReadDeviceNumber(disk.folder / "dev"), disk.identify}, asking_.kept));
    }
  }

  const DriveAnswers& AnswersOf(const std::string& name) {
    if (answers_.empty()) {
      answers_ = AskAll(drives_, asking_.limit, [this](const std::vector<bool>& isAwaited) {
        if (asking_.progress) asking_.progress(names_.size(), AwaitedNames(isAwaited));
      });
    }
    const auto found = std::ranges::find(names_, name);
    return answers_.at(static_cast<std::size_t>(found - names_.begin()));
  }

 private:
  std::vector<std::string> AwaitedNames(const std::vector<bool>& isAwaited) const {
    std::vector<std::string> awaited;
    for (std::size_t i = 0; i < names_.size(); i++) {
      if (isAwaited[i]) awaited.push_back(names_[i]);
    }
    return awaited;
  }

  Asking asking_;
  std::vector<std::string> names_;
  std::vector<platform::Drive> drives_;
  std::vector<DriveAnswers> answers_;  // none: not asked yet
};

constexpr SInt32 kSystemVersion = 0x1068;  // 10.6.8

// Where the kernel keeps no IDENTIFY data it has the first 16 characters of the model, or the name
// of a bridge: then only the drive tells, if it does.
std::string Model(const Disk& disk, Drives& drives) {
  std::optional<platform::Block> identify = disk.identify;
  if (!identify && !disk.isModelKnown) {
    const platform::Data& told = drives.AnswersOf(disk.name).identify.bytes;
    std::ranges::copy(told, identify.emplace().begin());
  }
  if (identify) return ModelNumber(*identify);
  return base::PrintableASCII(ReadText(disk.folder / "device" / "model"));
}

// As far as the kernel keeps it: a drive that does not answer is then known by it. A bridge has its
// own.
std::string Serial(const Disk& disk) {
  constexpr std::size_t kHeaderSize = 4;  // of the page of the vital product data
  if (disk.identify) return SerialNumber(*disk.identify);
  const std::string page = ReadFile(disk.folder / "device" / "vpd_pg80").value_or("");
  if (!disk.isModelKnown || page.size() < kHeaderSize) return {};
  return base::PrintableASCII(page.substr(kHeaderSize));
}

Property Text(std::string text) { return {std::move(text)}; }

// In bytes, a 64-bit number whatever its value: the probe takes the bytes of a smaller one in the
// processor's order. The attribute is in sectors of 512 bytes, whatever those of the disk.
std::optional<platform::Number> ReadSize(const Disk& disk) {
  constexpr std::uint64_t kSectorSize = 512;
  constexpr std::uint64_t kMaxSectors = std::numeric_limits<std::int64_t>::max() / kSectorSize;
  const auto sectors = ReadNumber(disk.folder / "size");
  if (!sectors || *sectors > kMaxSectors) return std::nullopt;
  return platform::Number{kCFNumberSInt64Type, *sectors * kSectorSize};
}

Entry MakeMedium(const Disk& disk, const std::string& model) {
  Entry medium{model + " Media", "IOMedia", {}, {}, {}};
  medium.properties.emplace(kDiskNameKey, Text(base::PrintableASCII(disk.name)));
  if (const auto size = ReadSize(disk)) medium.properties.emplace("Size", Property{*size});
  return medium;
}

const char* ClassOf(const Disk& disk) {
  if (disk.kind == Kind::kOther) return kOtherDiskClass;
  return disk.kind == Kind::kAHCI ? "IOAHCIBlockStorageDevice" : "IOATABlockStorageDevice";
}

Entry MakeDevice(const Disk& disk, const std::shared_ptr<Drives>& drives) {
  const std::string model = Model(disk, *drives);
  Dictionary characteristics = {{kProductNameKey, Text(model)}};
  if (disk.kind != Kind::kOther) {
    const Property features = {platform::IntegerNumber(AtaFeatures(disk))};
    characteristics.emplace("ATA Features", features);
  }
  Entry device{ClassOf(disk), ClassOf(disk), {}, {MakeMedium(disk, model)}, {}};
  if (const std::string serial = Serial(disk); !serial.empty()) {
    characteristics.emplace(kSerialNumberKey, Text(serial));
  }
  device.properties.emplace(kCharacteristicsKey, Property{std::move(characteristics)});
  if (IsAsked(disk)) {
    device.drive = [drives, name = disk.name] { return drives->AnswersOf(name); };
  }
  return device;
}

}  // namespace

platform::Machine ReadLinuxMachine(const fs::path& sysfs, const fs::path& dev,
                                   const Asking& asking) {
  const std::vector<Disk> disks = ReadDisks(sysfs);
  const auto drives = std::make_shared<Drives>(disks, dev, asking);
  Entry root{"Root", "IORegistryEntry", {}, {}, {}};
  for (const Disk& disk : disks) root.children.push_back(MakeDevice(disk, drives));
  platform::Machine machine;
  machine.systemVersion = kSystemVersion;
  machine.roots.push_back(std::move(root));
  return machine;
}

}  // namespace machines
