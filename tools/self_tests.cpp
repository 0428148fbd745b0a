#include "tools/self_tests.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "base/descriptor.h"
#include "base/standard_streams.h"
#include "machines/linux/host_disks.h"
#include "tools/drive_self_test.h"
#include "tools/program.h"

namespace tools {
namespace {

using machines::Disk;

const CommandLine kCommandLine = {
    "smartprobe-selftest",
    "Starts the short self-test of a drive, or of each drive after the other.",
    {{"extended", nullptr, "Start the extended self-test, which reads the whole disk"},
     {"wait", nullptr, "Wait for the end of the test, and say how it ended"},
     {"all", nullptr, "Test each drive of this host, one after the other, in place of DISK"}},
    "The disk, such as /dev/sda",
    false,
    "DISK"};

constexpr int kInterrupted = 130;  // as of a program that a signal has ended

// Without SA_RESTART, so that it ends what waits.
void NoticeSignals() {
  struct sigaction action {};
  action.sa_handler = [](int) { isInterrupted = 1; };
  for (const int signal : {SIGINT, SIGTERM}) sigaction(signal, &action, nullptr);
}

[[noreturn]] void TestAndExit(const Disk& disk, const HostFolders& folders,
                              const SelfTestOrder& order, int pipe) noexcept {
  const auto beat = [pipe] { [[maybe_unused]] const ssize_t sent = write(pipe, "", 1); };
  const int status = TestDrive(disk, folders.dev, order, beat);
  std::fflush(stdout);
  _exit(status);
}

// Waits until the child ends. Returns false if it gives no sign of life for so long, or not soon
// after an interruption.
bool IsAlive(int pipe, pid_t child, std::chrono::milliseconds silence) {
  constexpr std::chrono::milliseconds kAfterInterruption = std::chrono::seconds(5);
  pollfd input = {pipe, POLLIN, 0};
  std::array<char, 64> beats{};
  while (true) {
    const auto patience = isInterrupted != 0 ? std::min(silence, kAfterInterruption) : silence;
    const int count = poll(&input, 1, static_cast<int>(patience.count()));
    // It looks once more: this process may have been stopped, and the child with it.
    if (count == 0 && poll(&input, 1, 0) <= 0) return false;
    if (count < 0 && errno == EINTR) {
      kill(child, SIGINT);
    } else if (read(pipe, beats.data(), beats.size()) <= 0) {
      return true;
    }
  }
}

// In a process of its own, so that a drive that hangs does not hold up the next.
int Test(const Disk& disk, const HostFolders& folders, const SelfTestOrder& order,
         std::chrono::milliseconds silence) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category());
  const base::Descriptor reading(ends[0]);
  base::Descriptor writing(ends[1]);
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) TestAndExit(disk, folders, order, writing.Number());
  if (child < 0) throw std::system_error(errno, std::generic_category(), "no process to test in");
  close(writing.Release());
  if (!IsAlive(reading.Number(), child, silence + order.interval)) {
    kill(child, SIGKILL);
    base::PrintError(kCommandLine.program, disk.name + ": the drive does not answer");
    return kNotDone;
  }
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (WIFEXITED(status)) return WEXITSTATUS(status);
  base::PrintError(kCommandLine.program, disk.name + ": the process that tested it ended");
  return kNotDone;
}

// The name of the disk that the user means, by its name, its node in `dev` or a link to that. Empty
// for another path: a file of that name is no disk.
std::string NameOf(std::filesystem::path argument, const std::filesystem::path& dev,
                   const std::vector<Disk>& disks) {
  constexpr int kMostLinks = 40;
  if (!argument.has_parent_path()) return argument;
  std::error_code error;
  for (int links = 0; links < kMostLinks && !error; links++) {
    const std::filesystem::path folder = argument.parent_path();
    std::string name = argument.filename();
    const bool isDisk = std::ranges::find(disks, name, &Disk::name) != disks.end();
    if (isDisk && std::filesystem::equivalent(folder, dev, error)) return name;
    argument = folder / std::filesystem::read_symlink(argument, error);
  }
  return "";
}

// Those to test: the one of that name, or of each drive the first disk.
std::vector<Disk> Chosen(const Arguments& arguments, const HostFolders& folders) {
  std::vector<Disk> disks = machines::ListDisks(folders.sysfs);
  if (!arguments.Has("all")) {
    const std::string name = NameOf(*arguments.file, folders.dev, disks);
    std::erase_if(disks, [&](const Disk& disk) { return disk.name != name; });
    if (disks.empty()) throw std::runtime_error(*arguments.file + ": no such disk");
    return disks;
  }
  std::vector<Disk> chosen;
  for (const Disk& disk : disks) {
    const bool isSeen =
        !disk.drive.empty() && std::ranges::find(chosen, disk.drive, &Disk::drive) != chosen.end();
    if (!isSeen && disk.kind != machines::DiskKind::kOther) chosen.push_back(disk);
  }
  return chosen;
}

int TestDrives(const Arguments& arguments, const HostFolders& folders, const SelfTestTimes& times) {
  const bool isAll = arguments.Has("all");
  if (isAll == arguments.file.has_value()) {
    throw UsageError(isAll ? "--all needs no DISK" : "there is no DISK, and no --all");
  }
  SelfTestOrder order;
  if (arguments.Has("extended")) order.kind = machines::SelfTestKind::kExtended;
  // Two tests at a time could slow a host down.
  order.waits = isAll || arguments.Has("wait");
  order.interval = times.interval;
  NoticeSignals();
  int worst = kStarted;
  const std::vector<Disk> disks = Chosen(arguments, folders);
  if (disks.empty()) base::PrintError(kCommandLine.program, "no drives that could test themselves");
  for (const Disk& disk : disks) {
    const int status = Test(disk, folders, order, times.silence);
    if (isInterrupted != 0) return kInterrupted;
    const int usual = isAll ? kStarted : kNotDone;
    worst = std::max(worst, status == kHasNone ? usual : status);
  }
  return worst;
}

}  // namespace

int RunSelfTests(int argc, char** argv, const HostFolders& folders, const SelfTestTimes& times) {
  return RunProgram(kCommandLine, argc, argv, [&](const Arguments& arguments) {
    return TestDrives(arguments, folders, times);
  });
}

}  // namespace tools
