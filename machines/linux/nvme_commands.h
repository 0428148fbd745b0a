// Sends admin commands to an NVMe drive. nvme_drive.cpp and nvme_self_tester.cpp decide which.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace machines {

struct NvmeCommand {
  std::uint8_t operation = 0;
  std::uint32_t namespaces = 0;
  std::uint32_t word10 = 0;
};

inline constexpr std::uint32_t kAllNamespaces = 0xFFFFFFFF;

inline constexpr std::size_t kControllerSize = 4096;  // of what it answers, in bytes
inline constexpr NvmeCommand kIdentifyNvmeController = {.operation = 0x06, .word10 = 0x01};

// Get Log Page for the page of the whole drive. `size` is in bytes, a multiple of 4.
constexpr NvmeCommand GetNvmeLog(std::uint8_t page, std::size_t size) {
  const auto lastWord = static_cast<std::uint32_t>(size / 4 - 1);
  return {.operation = 0x02, .namespaces = kAllNamespaces, .word10 = page | lastWord << 16};
}
inline constexpr std::uint8_t kNvmeHealthPage = 0x02;
inline constexpr std::uint8_t kNvmeSelfTestPage = 0x06;

// Sends the command to the open `node`, once, and waits for its end, at most 20 seconds. Its answer
// fills `data`, which may be empty. Returns why it failed, in words, or an empty text.
std::string SendNvme(int node, const NvmeCommand& command, std::span<std::uint8_t> data);

}  // namespace machines
