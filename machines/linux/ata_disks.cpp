#include "machines/linux/ata_disks.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "machines/linux/attributes.h"

namespace machines {
namespace {

namespace fs = std::filesystem;

// Where a device is attached: the port, and the folder of its SCSI host.
struct Attachment {
  std::string port;
  fs::path host;
};

bool IsPortName(std::string_view name) {
  constexpr std::string_view kPrefix = "ata";
  return name.size() > kPrefix.size() && name.starts_with(kPrefix) &&
         name.find_first_not_of("0123456789", kPrefix.size()) == std::string_view::npos;
}

// A device's folder lies in that of its port: .../ata1/host0/target0:0:0/... Disks
// behind USB, SAS and the like have a host, but no port.
std::optional<Attachment> FindAttachment(const fs::path& sysfs, const fs::path& device) {
  fs::path folder = sysfs;
  const fs::path parts = device.lexically_relative(sysfs);
  for (auto part = parts.begin(); part != parts.end(); ++part) {
    folder /= *part;
    const auto next = std::next(part);
    if (IsPortName(part->native()) && next != parts.end()) return {{*part, folder / *next}};
  }
  return std::nullopt;
}

// An optical drive on an ATA port is a block device too.
bool IsDisk(const fs::path& folder) {
  constexpr std::string_view kDirectAccess = "0";
  return ReadText(folder / "device" / "type") == kDirectAccess;
}

std::optional<AtaDisk> ReadDisk(const fs::path& sysfs, const fs::path& link) {
  std::error_code error;
  fs::path folder = fs::canonical(link, error);
  if (error) return std::nullopt;
  std::optional<Attachment> attachment = FindAttachment(sysfs, folder);
  if (!attachment || !IsDisk(folder)) return std::nullopt;
  const fs::path host = attachment->host / "scsi_host" / attachment->host.filename();
  return {{link.filename(), std::move(folder), std::move(attachment->port),
           ReadText(host / "proc_name")}};
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
