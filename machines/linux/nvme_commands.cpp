#include "machines/linux/nvme_commands.h"

#include <linux/nvme_ioctl.h>
#include <sys/ioctl.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace machines {

namespace {

// As the standard lists the statuses: "4002h".
std::string Hexadecimal(int status) {
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "%02Xh", static_cast<unsigned>(status));
  return text.data();
}

}  // namespace

std::string SendNvme(int node, const NvmeCommand& command, std::span<std::uint8_t> data) {
  constexpr std::uint32_t kTimeout = 20'000;  // in milliseconds
  nvme_admin_cmd sent{};
  sent.opcode = command.operation;
  sent.nsid = command.namespaces;
  sent.addr = reinterpret_cast<std::uintptr_t>(data.data());
  sent.data_len = static_cast<std::uint32_t>(data.size());
  sent.cdw10 = command.word10;
  sent.timeout_ms = kTimeout;
  const int status = ioctl(node, NVME_IOCTL_ADMIN_CMD, &sent);
  if (status == 0) return "";
  if (status > 0) return "the drive refused, NVMe status " + Hexadecimal(status);
  const bool isForbidden = errno == EACCES || errno == EPERM;
  return std::string(strerror(errno)) + (isForbidden ? " (run as root)" : "");
}

}  // namespace machines
