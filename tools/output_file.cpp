// Writing a file whole or not at all.
#include "tools/output_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace tools {
namespace {

constexpr mode_t kModeBeforeMask = 0666;

std::system_error SystemError() { return {errno, std::generic_category()}; }

mode_t FileModeMask() {
  const mode_t mask = umask(0);
  umask(mask);
  return mask;
}

// A file of its own name beside the one that it will replace; removed unless renamed.
class NewFile {
 public:
  explicit NewFile(const std::string& file) : path_(file + ".XXXXXX") {
    descriptor_ = mkostemp(path_.data(), 0);
    if (descriptor_ < 0) throw SystemError();
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile() {
    if (descriptor_ >= 0) close(descriptor_);
    if (!renamed_) unlink(path_.c_str());
  }

  void Write(std::string_view bytes) const {
    while (!bytes.empty()) {
      const ssize_t count = write(descriptor_, bytes.data(), bytes.size());
      if (count < 0) throw SystemError();
      bytes.remove_prefix(static_cast<std::size_t>(count));
    }
  }

  // On the disk before it has the name: a crash leaves no empty file under it.
  void RenameTo(const std::string& file) {
    if (fchmod(descriptor_, kModeBeforeMask & ~FileModeMask()) != 0) throw SystemError();
    if (fsync(descriptor_) != 0) throw SystemError();
    if (close(std::exchange(descriptor_, -1)) != 0) throw SystemError();
    if (rename(path_.c_str(), file.c_str()) != 0) throw SystemError();
    renamed_ = true;
  }

 private:
  std::string path_;
  int descriptor_ = -1;
  bool renamed_ = false;
};

}  // namespace

void CheckOutputFile(const std::string& file) {
  struct stat status {};
  if (lstat(file.c_str(), &status) != 0) {
    if (errno == ENOENT) return;
    throw SystemError();
  }
  if (!S_ISREG(status.st_mode)) throw std::runtime_error("not a regular file");
}

void WriteOutputFile(const std::string& file, std::string_view bytes) {
  CheckOutputFile(file);
  NewFile written(file);
  written.Write(bytes);
  written.RenameTo(file);
}

}  // namespace tools
