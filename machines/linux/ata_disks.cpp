#include "machines/linux/ata_disks.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "machines/linux/identify_data.h"
#include "machines/linux/sysfs_files.h"

namespace machines {
namespace {

namespace fs = std::filesystem;

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
Attachment FindAttachment(const fs::path& sysfs, const fs::path& device) {
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
  Attachment attachment = FindAttachment(sysfs, folder);
  const fs::path device = folder / "device";
  if (attachment.host.empty() || !IsDisk(device)) return std::nullopt;
  const auto page = ReadAttribute(device / "vpd_pg89");
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

}  // namespace

std::vector<AtaDisk> FindAtaDisks(const fs::path& sysfs) {
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

}  // namespace machines
