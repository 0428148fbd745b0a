#include "tools/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <system_error>

#include "base/descriptor.h"
#include "base/files.h"
#include "base/standard_streams.h"

namespace tools {
namespace {

constexpr mode_t kModeBeforeMask = 0666;
// Not the bits that lend the owner's rights: the owner may be another.
constexpr mode_t kKeptMode = 0777;

mode_t ModeOfNewFiles() {
  const mode_t mask = umask(0);
  umask(mask);
  return kModeBeforeMask & ~mask;
}

// The mode that the file in the place of `file` is to have.
mode_t ModeFor(const std::string& file) {
  struct stat status {};
  if (lstat(file.c_str(), &status) != 0) {
    if (errno == ENOENT) return ModeOfNewFiles();
    throw base::SystemError(file);
  }
  if (!S_ISREG(status.st_mode)) throw std::runtime_error(file + ": not a regular file");
  return status.st_mode & kKeptMode;
}

bool Write(int descriptor, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = write(descriptor, bytes.data(), bytes.size());
    if (count < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

// No signal ends the process while one of these lives; those that came do so afterwards.
class HeldSignals {
 public:
  HeldSignals() {
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_BLOCK, &all, &before_);
  }
  HeldSignals(const HeldSignals&) = delete;
  HeldSignals& operator=(const HeldSignals&) = delete;
  ~HeldSignals() { sigprocmask(SIG_SETMASK, &before_, nullptr); }

 private:
  sigset_t before_{};
};

// Makes a new file beside `file`, which takes its place if `bytes` are given, and is removed if
// not. They are on the disk before it has the name: a crash leaves no empty file under it.
void Replace(const std::string& file, const std::string_view* bytes) {
  const mode_t mode = ModeFor(file);
  const HeldSignals held;
  std::string made = file + ".XXXXXX";
  base::Descriptor opened(mkostemp(made.data(), O_CLOEXEC));
  if (!opened.IsOpen()) throw base::SystemError(file);
  const bool isDone = bytes != nullptr && Write(opened.Number(), *bytes) &&
                      fchmod(opened.Number(), mode) == 0 && fsync(opened.Number()) == 0 &&
                      close(opened.Release()) == 0 && rename(made.c_str(), file.c_str()) == 0;
  if (isDone) return;
  const int reason = errno;
  unlink(made.c_str());
  if (bytes != nullptr) throw std::system_error(reason, std::generic_category(), file);
}

}  // namespace

void CheckOutputFile(const std::string& file) {
  if (!base::IsStandardStream(file)) Replace(file, nullptr);
}

void WriteOutputFile(const std::string& file, std::string_view bytes) {
  if (base::IsStandardStream(file)) {
    base::Print(bytes);
  } else {
    Replace(file, &bytes);
  }
}

}  // namespace tools
