// Reading a file or standard input.
#include "tools/input.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

namespace tools {
namespace {

// The error that the last system call left, as an exception.
std::system_error SystemError() { return {errno, std::generic_category()}; }

// An open input. Standard input is not ours to close.
class Input {
 public:
  explicit Input(const std::string& file)
      : isStandard_(file == "-"),
        descriptor_(isStandard_ ? STDIN_FILENO : open(file.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (descriptor_ < 0) throw SystemError();
  }
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;
  ~Input() {
    if (!isStandard_) close(descriptor_);
  }

  // Reads the next bytes, at most `size`; 0 at the end.
  std::size_t Read(char* bytes, std::size_t size) const {
    const ssize_t count = read(descriptor_, bytes, size);
    if (count < 0) throw SystemError();
    return static_cast<std::size_t>(count);
  }

 private:
  bool isStandard_;
  int descriptor_;
};

}  // namespace

std::string ReadUpTo(std::size_t limit, const std::string& file) {
  const Input input(file);
  std::string bytes;
  std::array<char, std::size_t{64} << 10> buffer;
  while (bytes.size() < limit) {
    const std::size_t wanted = std::min(buffer.size(), limit - bytes.size());
    const std::size_t count = input.Read(buffer.data(), wanted);
    if (count == 0) break;
    bytes.append(buffer.data(), count);
  }
  return bytes;
}

}  // namespace tools
