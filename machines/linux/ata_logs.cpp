#include "machines/linux/ata_logs.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

#include "drives/identify_data.h"
#include "drives/statistics.h"
#include "machines/entries/drive_logs.h"
#include "machines/linux/ata_commands.h"

namespace machines {
namespace {

using base::Block;

constexpr std::uint8_t kDirectoryAddress = 0x00;
constexpr std::uint8_t kStatisticsAddress = 0x04;
constexpr std::uint8_t kSelfTestAddress = 0x06;

constexpr AtaRegisters kReadSelfTestLog = SMARTCommand(0xD5, kSelfTestAddress);

constexpr AtaRegisters ReadLogExt(std::uint8_t address, std::uint8_t page) {
  return {.command = 0x2F, .lbaLow = address, .lbaMid = page, .isExtended = true};
}

class LogReader {
 public:
  LogReader(int node, const Block& before) : node_(node), before_(before) {}

  // nullopt also for what the drive did not send: zeros, what the buffer held, or the block before.
  std::optional<Block> Read(const AtaRegisters& command) {
    if (hasFailed_) return std::nullopt;
    Block fill;
    fill.fill(kFill);
    const BlockResult result = ReadBlock(node_, command, fill);
    hasFailed_ = result.end == CommandEnd::kFailed;
    if (!result.block || result.block == fill || result.block == Block{}) return std::nullopt;
    if (result.block == before_) return std::nullopt;
    before_ = *result.block;
    return before_;
  }

 private:
  static constexpr std::uint8_t kFill = 0xA6;

  int node_;
  bool hasFailed_ = false;
  Block before_;
};

// Whether the directory of logs has statistics, as a number of pages.
bool HasStatistics(const std::optional<Block>& directory) {
  constexpr std::size_t kCount = 2 * kStatisticsAddress;
  return directory && ((*directory)[kCount] | (*directory)[kCount + 1]) != 0;
}

platform::Data ReadStatistics(LogReader& reader) {
  platform::Data statistics;
  if (!HasStatistics(reader.Read(ReadLogExt(kDirectoryAddress, 0)))) return statistics;
  const auto list = reader.Read(ReadLogExt(kStatisticsAddress, 0));
  if (!list) return statistics;
  for (const std::uint8_t page : drives::StatisticsPages(*list)) {
    const auto block = reader.Read(ReadLogExt(kStatisticsAddress, page));
    if (block) statistics.insert(statistics.end(), block->begin(), block->end());
  }
  return statistics;
}

}  // namespace

std::optional<Block> ReadSelfTestLog(int node, const Block& before) {
  return LogReader(node, before).Read(kReadSelfTestLog);
}

decltype(platform::DriveAnswers::logs) ReadAtaLogs(int node, const Block& identify,
                                                   const Block& before) {
  decltype(platform::DriveAnswers::logs) logs;
  LogReader reader(node, before);
  if (drives::HasSelfTests(identify)) {
    const auto log = reader.Read(kReadSelfTestLog);
    if (log) logs.emplace(kSelfTestLog, platform::Data(log->begin(), log->end()));
  }
  if (drives::HasLogs(identify)) {
    platform::Data statistics = ReadStatistics(reader);
    if (!statistics.empty()) logs.emplace(kStatistics, std::move(statistics));
  }
  return logs;
}

}  // namespace machines
