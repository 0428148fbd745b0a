#include "machines/linux/host_machine.h"

#include <IOKit/storage/ata/ATASMARTLib.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <utility>

#include "base/printable_text.h"
#include "drives/identify_data.h"
#include "machines/entries/device_entries.h"
#include "machines/linux/nvme_drive.h"
#include "machines/linux/scsi_drive.h"
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
bool IsAsked(const Disk& disk, const Asking& asking) {
  if (disk.kind == DiskKind::kATA) return AtaFeatures(disk) != 0;
  if (disk.kind == DiskKind::kAHCI) return true;
  return asking.beyondReport && disk.kind != DiskKind::kOther;
}

bool IsATA(const Disk& disk) { return disk.kind == DiskKind::kATA || disk.kind == DiskKind::kAHCI; }

// Without IDENTIFY data the kernel knows only the first 16 characters of the model. If it knows
// only the name of a bridge, the model comes from the drive's own answer, and is empty without one.
std::string Model(const Disk& disk) {
  if (disk.identify) return drives::ModelNumber(*disk.identify);
  if (!disk.isModelKnown) return "";
  const fs::path device = disk.folder / "device";
  std::string model = base::PrintableASCII(ReadText(device / "model"));
  if (disk.kind != DiskKind::kSCSI) return model;
  return base::PrintableASCII(ReadText(device / "vendor") + " " + model);
}

// The serial number that the kernel keeps, which identifies a drive that does not answer. Empty if
// there is none, or if it is that of a bridge.
std::string Serial(const Disk& disk) {
  constexpr std::size_t kHeaderSize = 4;  // of the page of the vital product data
  if (disk.identify) return drives::SerialNumber(*disk.identify);
  if (disk.kind == DiskKind::kNVMe) {
    return base::PrintableASCII(ReadText(disk.folder / "device" / "serial"));
  }
  const std::string page = ReadFile(disk.folder / "device" / "vpd_pg80").value_or("");
  if (!disk.isModelKnown || page.size() < kHeaderSize) return {};
  return base::PrintableASCII(page.substr(kHeaderSize));
}

// Of a disk that does not speak ATA; the others give it with their IDENTIFY DEVICE data.
std::string Revision(const Disk& disk) {
  if (IsATA(disk)) return {};
  const char* file = disk.kind == DiskKind::kNVMe ? "firmware_rev" : "rev";
  return base::PrintableASCII(ReadText(disk.folder / "device" / file));
}

// By what its answers are kept. Empty if that takes asking it.
std::string Identity(const Disk& disk) {
  if (!IsATA(disk)) return IdentityOf(Model(disk), Serial(disk));
  return disk.identify ? drives::Identity(*disk.identify) : "";
}

// Whether the kernel has suspended the drive, which opening its node would end. An NVMe drive is
// suspended together with its port.
bool IsSuspended(const Disk& disk) {
  const fs::path device = disk.folder / "device";
  return std::ranges::any_of(std::array{device, device / "device"}, [](const fs::path& folder) {
    return ReadText(folder / "power" / "runtime_status") == "suspended";
  });
}

std::optional<DriveAnswers> AnswersOfSuspended(const Disk& disk, const KeptAnswers& kept) {
  if (!kept || !IsSuspended(disk)) return std::nullopt;
  const std::string identity = Identity(disk);
  return identity.empty() ? std::nullopt : kept(identity);
}

// The logs of a drive that sleeps on are kept with its other answers.
Query MakeAtaQuery(const Disk& disk, const DiskNode& node, const Asking& asking) {
  const auto isKept = std::make_shared<bool>(false);
  KeptAnswers kept;
  if (asking.kept) {
    kept = [isKept, all = asking.kept](const std::string& identity) {
      auto answers = all(identity);
      *isKept = answers.has_value();
      return answers;
    };
  }
  Query query = {MakeAtaDrive({node, disk.identify}, kept)};
  if (!asking.beyondReport || !HasLogs(disk)) return query;
  query.more = [node, isKept](DriveAnswers& answers) {
    if (!*isKept) AddAtaLogs(node, answers);
  };
  return query;
}

Query MakeQuery(const Disk& disk, const fs::path& dev, const Asking& asking) {
  const DiskNode node = {dev / disk.name, ReadDeviceNumber(disk.folder / "dev"),
                         CapabilitiesFor(disk)};
  if (disk.kind == DiskKind::kNVMe) {
    return {MakeNvmeDrive(node), [node](DriveAnswers& answers) { AddNvmeLogs(node, answers); }};
  }
  if (disk.kind != DiskKind::kSCSI) return MakeAtaQuery(disk, node, asking);
  return {MakeScsiDrive({node, Identity(disk), disk.isOnUSB}, asking.kept)};
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

// The disk whose answers are this disk's too: itself, or the first namespace of its drive.
const Disk* AskedFor(const Disk& disk, const std::vector<const Disk*>& asked) {
  const auto isOfDrive = [&](const Disk* other) {
    return !disk.drive.empty() && other->drive == disk.drive;
  };
  const auto found = std::ranges::find_if(asked, isOfDrive);
  return found == asked.end() ? &disk : *found;
}

Answers AskAllOf(const std::vector<Disk>& disks, const fs::path& dev, const Asking& asking) {
  Answers answers;
  std::vector<const Disk*> asked;
  std::vector<Query> queries;
  for (const Disk& disk : disks) {
    if (!IsAsked(disk, asking) || AskedFor(disk, asked) != &disk) continue;
    if (auto kept = AnswersOfSuspended(disk, asking.kept)) {
      answers.emplace(&disk, std::move(*kept));
      continue;
    }
    asked.push_back(&disk);
    queries.push_back(MakeQuery(disk, dev, asking));
  }
  auto all = AskAll(queries, asking.limit, [&](const std::vector<bool>& isAwaited) {
    if (asking.progress) asking.progress(asked.size(), AwaitedNames(asked, isAwaited));
  });
  for (std::size_t i = 0; i < asked.size(); i++) answers.emplace(asked[i], std::move(all[i]));
  for (const Disk& disk : disks) {
    const auto found = answers.find(AskedFor(disk, asked));
    if (found != answers.end()) answers.emplace(&disk, found->second);
  }
  return answers;
}

constexpr SInt32 kSystemVersion = 0x1068;  // 10.6.8

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

Entry MakeMedium(const Disk& disk) {
  Entry medium{"", "IOMedia", {}, {}, {}};
  medium.properties.emplace(kDiskNameKey, Text(base::PrintableASCII(disk.name)));
  if (const auto size = ReadSize(disk)) medium.properties.emplace(kSizeKey, Property{*size});
  return medium;
}

const char* ClassOf(const Disk& disk) {
  if (!IsATA(disk)) return kOtherDiskClass;
  return disk.kind == DiskKind::kAHCI ? kAHCIDeviceClass : kATADeviceName;
}

// Of a SCSI disk that refuses LOG SENSE, or fails it behind USB.
bool HasNothingToSay(const DriveAnswers& answers) {
  return answers.whyNotOpened.empty() && !answers.date;
}

// Names the device and its medium after the model.
void SetModel(Entry& device, Dictionary& characteristics, const std::string& model) {
  characteristics[kProductNameKey] = Text(model);
  device.children.front().name = model + " Media";
}

// Without what the disk answers.
Entry MakeDevice(const Disk& disk) {
  Entry device{ClassOf(disk), ClassOf(disk), {}, {MakeMedium(disk)}, {}};
  Dictionary characteristics;
  SetModel(device, characteristics, Model(disk));
  if (IsATA(disk)) {
    const Property features = {platform::IntegerNumber(AtaFeatures(disk))};
    characteristics.emplace("ATA Features", features);
  }
  if (const std::string serial = Serial(disk); !serial.empty()) {
    characteristics.emplace(kSerialNumberKey, Text(serial));
  }
  if (const std::string revision = Revision(disk); !revision.empty()) {
    characteristics.emplace(kRevisionKey, Text(revision));
  }
  device.properties.emplace(kCharacteristicsKey, Property{std::move(characteristics)});
  return device;
}

void AddAnswers(Entry& device, const Disk& disk, const DriveAnswers& answers) {
  if (HasNothingToSay(answers)) return;
  device.drive = [copy = answers] { return copy; };
  const auto identify = answers.identify.Block();
  if (disk.isModelKnown || disk.identify || !identify) return;
  auto& characteristics = std::get<Dictionary>(device.properties.at(kCharacteristicsKey).value);
  SetModel(device, characteristics, drives::ModelNumber(*identify));
}

}  // namespace

// The kernel is asked for names first: it forgets a drive that it gives up meanwhile.
platform::Machine AskDisks(const std::vector<Disk>& disks, const fs::path& dev,
                           const Asking& asking) {
  Entry root{"Root", "IORegistryEntry", {}, {}, {}};
  for (const Disk& disk : disks) root.children.push_back(MakeDevice(disk));
  const Answers answers = AskAllOf(disks, dev, asking);
  for (std::size_t i = 0; i < disks.size(); i++) {
    const auto found = answers.find(&disks[i]);
    if (found != answers.end()) AddAnswers(root.children[i], disks[i], found->second);
  }
  platform::Machine machine;
  machine.systemVersion = kSystemVersion;
  machine.roots.push_back(std::move(root));
  return machine;
}

}  // namespace machines
