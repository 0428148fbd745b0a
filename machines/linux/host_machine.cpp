#include "machines/linux/host_machine.h"

#include <IOKit/storage/ata/ATASMARTLib.h>

#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <utility>

#include "base/printable_text.h"
#include "drives/identify_data.h"
#include "machines/entries/device_entries.h"
#include "machines/linux/sysfs_files.h"

namespace machines {
namespace {

namespace fs = std::filesystem;
using platform::Dictionary;
using platform::DriveAnswers;
using platform::Entry;
using platform::Property;

SInt32 AtaFeatures(const Disk& disk) {
  return disk.identify && drives::LacksSMART(*disk.identify) ? 0 : kIOATAFeatureSMART;
}

// A drive that the probe would turn away is not asked. The probe turns no AHCI drive away.
bool IsAsked(const Disk& disk) {
  return disk.kind == DiskKind::kAHCI || (disk.kind == DiskKind::kATA && AtaFeatures(disk) != 0);
}

std::vector<std::string> AwaitedNames(const std::vector<const Disk*>& asked,
                                      const std::vector<bool>& isAwaited) {
  std::vector<std::string> awaited;
  for (std::size_t i = 0; i < asked.size(); i++) {
    if (isAwaited[i]) awaited.push_back(asked[i]->name);
  }
  return awaited;
}

using Answers = std::map<const Disk*, DriveAnswers>;

Answers AskAllOf(const std::vector<Disk>& disks, const fs::path& dev, const Asking& asking) {
  std::vector<const Disk*> asked;
  std::vector<platform::Drive> queries;
  for (const Disk& disk : disks) {
    if (!IsAsked(disk)) continue;
    asked.push_back(&disk);
    queries.push_back(MakeAtaDrive(
        {dev / disk.name, ReadDeviceNumber(disk.folder / "dev"), disk.identify}, asking.kept));
  }
  auto all = AskAll(queries, asking.limit, [&](const std::vector<bool>& isAwaited) {
    if (asking.progress) asking.progress(asked.size(), AwaitedNames(asked, isAwaited));
  });
  Answers answers;
  for (std::size_t i = 0; i < asked.size(); i++) answers.emplace(asked[i], std::move(all[i]));
  return answers;
}

constexpr SInt32 kSystemVersion = 0x1068;  // 10.6.8

// Without IDENTIFY data the kernel knows only the first 16 characters of the model. If it knows
// only the name of a bridge, the model comes from the drive's own answer, and is empty without one.
std::string Model(const Disk& disk, const DriveAnswers* answers) {
  std::optional<base::Block> identify = disk.identify;
  if (!identify && !disk.isModelKnown) {
    identify = answers ? answers->identify.Block().value_or(base::Block{}) : base::Block{};
  }
  if (identify) return drives::ModelNumber(*identify);
  return base::PrintableASCII(ReadText(disk.folder / "device" / "model"));
}

// The serial number that the kernel keeps, which identifies a drive that does not answer. Empty if
// there is none, or if it is that of a bridge.
std::string Serial(const Disk& disk) {
  constexpr std::size_t kHeaderSize = 4;  // of the page of the vital product data
  if (disk.identify) return drives::SerialNumber(*disk.identify);
  const std::string page = ReadFile(disk.folder / "device" / "vpd_pg80").value_or("");
  if (!disk.isModelKnown || page.size() < kHeaderSize) return {};
  return base::PrintableASCII(page.substr(kHeaderSize));
}

Property Text(std::string text) { return {std::move(text)}; }

// The size in bytes. It is always a 64-bit number: the probe stores a smaller type in the first
// bytes of a 64-bit number, which gives the right value only if the low bytes come first. The
// attribute counts sectors of 512 bytes, whatever the sector size of the disk.
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
  if (const auto size = ReadSize(disk)) medium.properties.emplace(kSizeKey, Property{*size});
  return medium;
}

const char* ClassOf(const Disk& disk) {
  if (disk.kind == DiskKind::kOther) return kOtherDiskClass;
  return disk.kind == DiskKind::kAHCI ? kAHCIDeviceClass : kATADeviceName;
}

// `answers` is null if the disk was not asked.
Entry MakeDevice(const Disk& disk, const DriveAnswers* answers) {
  const std::string model = Model(disk, answers);
  Dictionary characteristics = {{kProductNameKey, Text(model)}};
  if (disk.kind != DiskKind::kOther) {
    const Property features = {platform::IntegerNumber(AtaFeatures(disk))};
    characteristics.emplace("ATA Features", features);
  }
  Entry device{ClassOf(disk), ClassOf(disk), {}, {MakeMedium(disk, model)}, {}};
  if (const std::string serial = Serial(disk); !serial.empty()) {
    characteristics.emplace(kSerialNumberKey, Text(serial));
  }
  device.properties.emplace(kCharacteristicsKey, Property{std::move(characteristics)});
  if (answers) device.drive = [copy = *answers] { return copy; };
  return device;
}

}  // namespace

platform::Machine AskDisks(const std::vector<Disk>& disks, const fs::path& dev,
                           const Asking& asking) {
  const Answers answers = AskAllOf(disks, dev, asking);
  Entry root{"Root", "IORegistryEntry", {}, {}, {}};
  for (const Disk& disk : disks) {
    const auto found = answers.find(&disk);
    root.children.push_back(MakeDevice(disk, found == answers.end() ? nullptr : &found->second));
  }
  platform::Machine machine;
  machine.systemVersion = kSystemVersion;
  machine.roots.push_back(std::move(root));
  return machine;
}

}  // namespace machines
