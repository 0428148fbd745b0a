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
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "base/descriptor.h"
#include "machines/linux/answer_bytes.h"
#include "machines/linux/capabilities.h"

namespace machines {
namespace {

using platform::DriveAnswers;
using Clock = std::chrono::steady_clock;

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

// Sends the answers after their size. Ends the process if it cannot.
void Send(const DriveAnswers& answers) {
  const std::string bytes = Packed(answers);
  const std::uint64_t size = bytes.size();
  std::string frame(reinterpret_cast<const char*>(&size), sizeof size);
  frame += bytes;
  std::string_view rest = frame;
  while (!rest.empty()) {
    const ssize_t written = write(kKept, rest.data(), rest.size());
    if (written < 0) _exit(1);
    rest.remove_prefix(static_cast<std::size_t>(written));
  }
}

// Any exception ends the child here, so that it does nothing that the parent does too.
[[noreturn]] void AnswerAndExit(const Query& query, int pipe) noexcept {
  std::signal(SIGPIPE, SIG_DFL);  // ends the child if the parent is gone
  GiveUpDescriptorsBut(pipe);
  DriveAnswers answers = query.drive();
  if (query.more) {
    DriveAnswers first = answers;  // all that comes, if it hangs then
    first.whyNoLogs = "it did not answer when it was asked for its logs";
    Send(first);
    query.more(answers);
  }
  Send(answers);
  _exit(0);
}

struct Child {
  pid_t process = -1;
  base::Descriptor pipe = {};                // open as long as the answers are awaited
  std::string bytes = {};                    // what has come of them, but for those that are whole
  std::optional<DriveAnswers> answers = {};  // the last that came whole
};

Child Start(const Query& query) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    return {-1, {}, {}, Failed(std::string("no pipe to ask it through: ") + strerror(errno))};
  }
  base::Descriptor reading(ends[0]);
  const base::Descriptor writing(ends[1]);
  fcntl(reading.Number(), F_SETFL, O_NONBLOCK);
  const pid_t process = fork();
  if (process == 0) AnswerAndExit(query, writing.Number());
  if (process < 0) {
    return {-1, {}, {}, Failed(std::string("no process to ask it in: ") + strerror(errno))};
  }
  return {process, std::move(reading)};
}

// Takes the answers that have come whole.
void TakeAnswers(Child& child) {
  std::uint64_t size = 0;
  while (child.bytes.size() >= sizeof size) {
    std::memcpy(&size, child.bytes.data(), sizeof size);
    if (child.bytes.size() - sizeof size < size) return;
    const auto length = static_cast<std::size_t>(size);
    if (auto answers = Unpacked(std::string_view(child.bytes).substr(sizeof size, length))) {
      child.answers = std::move(answers);
    }
    child.bytes.erase(0, sizeof size + length);
  }
}

// Reads all that has come of the child's answers. At their end it closes the pipe.
void Receive(Child& child) {
  std::array<char, PIPE_BUF> bytes{};
  ssize_t count = 0;
  while ((count = read(child.pipe.Number(), bytes.data(), bytes.size())) > 0) {
    child.bytes.append(bytes.data(), static_cast<std::size_t>(count));
  }
  TakeAnswers(child);
  if (count < 0 && errno == EAGAIN) return;
  if (!child.answers) child.answers = Failed("the process that asked it ended");
  close(child.pipe.Release());
}

void GiveUp(Child& child, std::chrono::milliseconds limit) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(limit).count();
  if (!child.answers) {
    child.answers = Failed("no answer within " + std::to_string(seconds) + " seconds");
  }
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

std::vector<DriveAnswers> AskAll(const std::vector<Query>& queries, std::chrono::milliseconds limit,
                                 const Progress& progress) {
  const Clock::time_point end = Clock::now() + limit;
  AllowManyDescriptors();
  std::vector<Child> children;
  children.reserve(queries.size());
  for (const Query& query : queries) children.push_back(Start(query));
  KeepCapabilities(kCapabilitiesOfFiles);
  do {
    if (progress) progress(Awaited(children));
  } while (ReceiveSome(children, end));

  std::vector<DriveAnswers> answers;
  for (Child& child : children) {
    if (child.pipe.IsOpen()) GiveUp(child, limit);
    if (child.process > 0) waitpid(child.process, nullptr, WNOHANG);
    answers.push_back(std::move(*child.answers));
  }
  if (progress) progress(std::vector<bool>(queries.size()));
  return answers;
}

}  // namespace machines
