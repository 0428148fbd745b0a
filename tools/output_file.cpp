#include "tools/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

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

void Write(int descriptor, std::string_view bytes, const std::string& file) {
  while (!bytes.empty()) {
    const ssize_t count = write(descriptor, bytes.data(), bytes.size());
    if (count < 0) throw base::SystemError(file);
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
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

// A new file beside `file`, which is gone with its object unless it has taken that place.
class NewFile {
 public:
  explicit NewFile(const std::string& file) : file_(file), path_(file + ".XXXXXX") {
    descriptor_ = base::Descriptor(mkostemp(path_.data(), O_CLOEXEC));
    if (!descriptor_.IsOpen()) throw base::SystemError(file_);
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile() {
    if (!path_.empty()) unlink(path_.c_str());
  }

  // On the disk before it has the name: a crash leaves no empty file under it.
  void Finish(std::string_view bytes, mode_t mode) {
    Write(descriptor_.Number(), bytes, file_);
    if (fchmod(descriptor_.Number(), mode) != 0) throw base::SystemError(file_);
    if (fsync(descriptor_.Number()) != 0) throw base::SystemError(file_);
    if (close(descriptor_.Release()) != 0) throw base::SystemError(file_);
    if (rename(path_.c_str(), file_.c_str()) != 0) throw base::SystemError(file_);
    path_.clear();
  }

 private:
  HeldSignals heldSignals_;  // the first member, so that they are held until all is undone
  const std::string& file_;
  std::string path_;
  base::Descriptor descriptor_;
};

}  // namespace

void CheckOutputFile(const std::string& file) {
  if (base::IsStandardStream(file)) return;
  ModeFor(file);
  const NewFile canBeMade(file);
}

void WriteOutputFile(const std::string& file, std::string_view bytes) {
  if (base::IsStandardStream(file)) {
    base::Print(bytes);
    return;
  }
  const mode_t mode = ModeFor(file);
  NewFile(file).Finish(bytes, mode);
}

}  // namespace tools
