#include "base/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "base/descriptor.h"

namespace base {
namespace {

// The size in bytes. 0 if it is not known in advance, as for a pipe.
std::size_t SizeOf(const Descriptor& input) {
  struct stat status {};
  if (fstat(input.Number(), &status) != 0) return 0;
  return static_cast<std::size_t>(status.st_size);
}

}  // namespace

std::system_error SystemError(const std::string& file) {
  return {errno, std::generic_category(), file};
}

bool ReadUpTo(std::size_t limit, int descriptor, std::string& bytes) {
  std::array<char, 4096> buffer;
  while (bytes.size() < limit) {
    const std::size_t wanted = std::min(buffer.size(), limit - bytes.size());
    const ssize_t count = read(descriptor, buffer.data(), wanted);
    if (count <= 0) return count == 0;
    bytes.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return true;
}

std::string ReadUpTo(std::size_t limit, const std::string& file) {
  const Descriptor input(IsStandardStream(file) ? fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                                : open(file.c_str(), O_RDONLY | O_CLOEXEC));
  if (!input.IsOpen()) throw SystemError(file);
  std::string bytes;
  bytes.reserve(std::min(limit, SizeOf(input)));
  if (!ReadUpTo(limit, input.Number(), bytes)) throw SystemError(file);
  return bytes;
}

}  // namespace base
