#include "tools/output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "base/descriptor.h"

namespace tools {
namespace {

constexpr mode_t kModeBeforeMask = 0666;

std::system_error SystemError(const std::string& file) {
  return {errno, std::generic_category(), file};
}

mode_t FileModeMask() {
  const mode_t mask = umask(0);
  umask(mask);
  return mask;
}

// A file of its own name beside the one that it will replace; removed unless renamed.
class NewFile {
 public:
  explicit NewFile(std::string file)
      : file_(std::move(file)),
        path_(file_ + ".XXXXXX"),
        descriptor_(mkostemp(path_.data(), O_CLOEXEC)) {
    if (!descriptor_.IsOpen()) throw SystemError(file_);
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile() {
    if (!renamed_) unlink(path_.c_str());
  }

  void Write(std::string_view bytes) const {
    while (!bytes.empty()) {
      const ssize_t count = write(descriptor_.number(), bytes.data(), bytes.size());
      if (count < 0) throw SystemError(file_);
      bytes.remove_prefix(static_cast<std::size_t>(count));
    }
  }

  // On the disk before it has the name: a crash leaves no empty file under it.
  void Rename() {
    if (fchmod(descriptor_.number(), kModeBeforeMask & ~FileModeMask()) != 0)
      throw SystemError(file_);
    if (fsync(descriptor_.number()) != 0) throw SystemError(file_);
    if (close(descriptor_.Release()) != 0) throw SystemError(file_);
    if (rename(path_.c_str(), file_.c_str()) != 0) throw SystemError(file_);
    renamed_ = true;
  }

 private:
  std::string file_;
  std::string path_;
  base::Descriptor descriptor_;
  bool renamed_ = false;
};

}  // namespace

void CheckOutputFile(const std::string& file) {
  struct stat status {};
  if (lstat(file.c_str(), &status) != 0) {
    if (errno == ENOENT) return;
    throw SystemError(file);
  }
  if (!S_ISREG(status.st_mode)) throw std::runtime_error(file + ": not a regular file");
}

void WriteOutputFile(const std::string& file, std::string_view bytes) {
  CheckOutputFile(file);
  NewFile written(file);
  written.Write(bytes);
  written.Rename();
}

}  // namespace tools
