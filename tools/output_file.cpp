#include "tools/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <utility>

#include "base/files.h"

namespace tools {
namespace {

constexpr mode_t kModeBeforeMask = 0666;

mode_t FileModeMask() {
  const mode_t mask = umask(0);
  umask(mask);
  return mask;
}

void CheckReplaceable(const std::string& file) {
  struct stat status {};
  if (lstat(file.c_str(), &status) != 0) {
    if (errno == ENOENT) return;
    throw base::SystemError(file);
  }
  if (!S_ISREG(status.st_mode)) throw std::runtime_error(file + ": not a regular file");
}

void Write(int descriptor, std::string_view bytes, const std::string& file) {
  while (!bytes.empty()) {
    const ssize_t count = write(descriptor, bytes.data(), bytes.size());
    if (count < 0) throw base::SystemError(file);
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

}  // namespace

OutputFile::OutputFile(std::string file) : file_(std::move(file)), path_(file_ + ".XXXXXX") {
  CheckReplaceable(file_);
  descriptor_ = base::Descriptor(mkostemp(path_.data(), O_CLOEXEC));
  if (!descriptor_.IsOpen()) throw base::SystemError(file_);
}

OutputFile::~OutputFile() {
  if (!renamed_) unlink(path_.c_str());
}

// On the disk before it has the name: a crash leaves no empty file under it.
void OutputFile::Finish(std::string_view bytes) {
  Write(descriptor_.Number(), bytes, file_);
  if (fchmod(descriptor_.Number(), kModeBeforeMask & ~FileModeMask()) != 0)
    throw base::SystemError(file_);
  if (fsync(descriptor_.Number()) != 0) throw base::SystemError(file_);
  if (close(descriptor_.Release()) != 0) throw base::SystemError(file_);
  CheckReplaceable(file_);  // it may have changed meanwhile
  if (rename(path_.c_str(), file_.c_str()) != 0) throw base::SystemError(file_);
  renamed_ = true;
}

}  // namespace tools
