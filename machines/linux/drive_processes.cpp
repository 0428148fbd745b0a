#include "machines/linux/drive_processes.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>
#include <utility>

#include "base/descriptor.h"

namespace machines {
namespace {

using platform::BlockAnswer;
using platform::DriveAnswers;
using Clock = std::chrono::steady_clock;

// Answers as they go through a pipe. They fit into PIPE_BUF, so that they are written and read
// whole or not at all.
struct SentBlock {
  std::size_t size;
  bool succeeds;
  base::Block bytes;
};
struct SentAnswers {
  std::array<char, 256> whyNotOpened;
  bool enables;
  bool hasExceeded;
  bool exceeded;
  bool hasDate;
  std::int64_t date;
  std::array<SentBlock, 3> blocks;  // data, thresholds, identify
};
static_assert(sizeof(SentAnswers) <= PIPE_BUF && std::is_trivially_copyable_v<SentAnswers>);

SentBlock Packed(const BlockAnswer& block) {
  SentBlock sent{block.bytes.size(), block.succeeds, {}};
  std::ranges::copy(block.bytes, sent.bytes.begin());
  return sent;
}

BlockAnswer Unpacked(const SentBlock& sent) {
  return {{sent.bytes.begin(), sent.bytes.begin() + static_cast<std::ptrdiff_t>(sent.size)},
          sent.succeeds};
}

SentAnswers Packed(const DriveAnswers& answers) {
  SentAnswers sent{};
  answers.whyNotOpened.copy(sent.whyNotOpened.data(), sent.whyNotOpened.size() - 1);
  sent.enables = answers.enables;
  sent.hasExceeded = answers.exceeded.has_value();
  sent.exceeded = answers.exceeded.value_or(false);
  sent.hasDate = answers.date.has_value();
  sent.date = answers.date.value_or(std::chrono::sys_seconds()).time_since_epoch().count();
  sent.blocks = {Packed(answers.data), Packed(answers.thresholds), Packed(answers.identify)};
  return sent;
}

DriveAnswers Unpacked(const SentAnswers& sent) {
  DriveAnswers answers;
  answers.whyNotOpened = sent.whyNotOpened.data();
  answers.enables = sent.enables;
  if (sent.hasExceeded) answers.exceeded = sent.exceeded;
  if (sent.hasDate) answers.date = std::chrono::sys_seconds(std::chrono::seconds(sent.date));
  answers.data = Unpacked(sent.blocks[0]);
  answers.thresholds = Unpacked(sent.blocks[1]);
  answers.identify = Unpacked(sent.blocks[2]);
  return answers;
}

DriveAnswers Failed(std::string why) {
  DriveAnswers answers;
  answers.whyNotOpened = std::move(why);
  return answers;
}

constexpr int kKept = STDERR_FILENO + 1;

// Moves `kept` to kKept and gives up all other descriptors, the standard streams too. The reader of
// the output waits until all writers have closed it, and a child that hangs would never do so.
void GiveUpDescriptorsBut(int kept) {
  dup2(kept, kKept);
  close_range(kKept + 1, ~0U, 0);
  const int null = open("/dev/null", O_RDWR);
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; stream++) {
    if (dup2(null, stream) < 0) close(stream);
  }
  if (null > kKept) close(null);
}

// Any exception ends the child here, so that it does nothing that the parent does too.
[[noreturn]] void AnswerAndExit(const platform::Drive& drive, int pipe) noexcept {
  std::signal(SIGPIPE, SIG_DFL);  // ends the child if the parent is gone
  GiveUpDescriptorsBut(pipe);
  const SentAnswers answers = Packed(drive());
  const ssize_t written = write(kKept, &answers, sizeof answers);
  _exit(written == sizeof answers ? 0 : 1);
}

struct Child {
  pid_t process = -1;
  base::Descriptor pipe = {};  // open as long as the answers are awaited
  DriveAnswers answers = {};   // set once the pipe is closed
};

Child Start(const platform::Drive& drive) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    return {-1, {}, Failed(std::string("no pipe to ask it through: ") + strerror(errno))};
  }
  base::Descriptor reading(ends[0]);
  const base::Descriptor writing(ends[1]);
  const pid_t process = fork();
  if (process == 0) AnswerAndExit(drive, writing.Number());
  if (process < 0) {
    return {-1, {}, Failed(std::string("no process to ask it in: ") + strerror(errno))};
  }
  return {process, std::move(reading), {}};
}

// Reads the child's answers from its pipe, or the pipe's end, and closes the pipe.
void Receive(Child& child) {
  SentAnswers sent;
  const ssize_t count = read(child.pipe.Number(), &sent, sizeof sent);
  const bool isWhole = count == sizeof sent;
  child.answers = isWhole ? Unpacked(sent) : Failed("the process that asked it ended");
  close(child.pipe.Release());
}

void GiveUp(Child& child, std::chrono::milliseconds limit) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(limit).count();
  child.answers = Failed("no answer within " + std::to_string(seconds) + " seconds");
  close(child.pipe.Release());
  kill(child.process, SIGKILL);
}

std::vector<bool> Awaited(const std::vector<Child>& children) {
  std::vector<bool> isAwaited(children.size());
  for (std::size_t i = 0; i < children.size(); i++) isAwaited[i] = children[i].pipe.IsOpen();
  return isAwaited;
}

// Waits for answers until `end` and takes those that have come, even if `end` has passed by then.
// Returns false if no more answers are awaited or the time is over.
bool ReceiveSome(std::vector<Child>& children, Clock::time_point end) {
  std::vector<pollfd> pipes;
  std::vector<Child*> awaited;
  for (Child& child : children) {
    if (!child.pipe.IsOpen()) continue;
    pipes.push_back({child.pipe.Number(), POLLIN, 0});
    awaited.push_back(&child);
  }
  if (awaited.empty()) return false;
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
  poll(pipes.data(), pipes.size(), static_cast<int>(std::clamp<std::int64_t>(left, 0, INT_MAX)));
  for (std::size_t i = 0; i < pipes.size(); i++) {
    if (pipes[i].revents != 0) Receive(*awaited[i]);
  }
  return left > 0 &&
         std::ranges::any_of(awaited, [](Child* child) { return child->pipe.IsOpen(); });
}

// Each drive needs a descriptor for its pipe.
void AllowManyDescriptors() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace

std::vector<DriveAnswers> AskAll(const std::vector<platform::Drive>& drives,
                                 std::chrono::milliseconds limit, const Progress& progress) {
  const Clock::time_point end = Clock::now() + limit;
  AllowManyDescriptors();
  std::vector<Child> children;
  children.reserve(drives.size());
  for (const platform::Drive& drive : drives) children.push_back(Start(drive));
  do {
    if (progress) progress(Awaited(children));
  } while (ReceiveSome(children, end));

  std::vector<DriveAnswers> answers;
  for (Child& child : children) {
    if (child.pipe.IsOpen()) GiveUp(child, limit);
    if (child.process > 0) waitpid(child.process, nullptr, WNOHANG);
    answers.push_back(std::move(child.answers));
  }
  if (progress) progress(std::vector<bool>(drives.size()));
  return answers;
}

}  // namespace machines
