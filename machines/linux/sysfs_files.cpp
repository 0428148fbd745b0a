#include "machines/linux/sysfs_files.h"

#include <fcntl.h>
#include <sys/sysmacros.h>

#include <cstddef>
#include <string_view>

#include "base/descriptor.h"
#include "base/files.h"
#include "base/numbers.h"
#include "base/printable_text.h"

namespace machines {

std::optional<std::string> ReadFile(const std::filesystem::path& file) {
  const base::Descriptor input(open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  constexpr std::size_t kPageSize = 4096;
  std::string content;
  if (!input.IsOpen() || !base::ReadUpTo(kPageSize, input.Number(), content)) return std::nullopt;
  return content;
}

std::string ReadText(const std::filesystem::path& file) {
  return std::string(base::Trimmed(ReadFile(file).value_or(""), " \t\n"));
}

std::optional<std::uint64_t> ReadNumber(const std::filesystem::path& file) {
  return base::ParseNumber<std::uint64_t>(ReadText(file), 10);
}

std::optional<dev_t> ReadDeviceNumber(const std::filesystem::path& file) {
  const std::string text = ReadText(file);
  const std::size_t colon = text.find(':');
  if (colon == std::string::npos) return std::nullopt;
  const auto major = base::ParseNumber<unsigned int>(std::string_view(text).substr(0, colon), 10);
  const auto minor = base::ParseNumber<unsigned int>(std::string_view(text).substr(colon + 1), 10);
  if (!major || !minor) return std::nullopt;
  return makedev(*major, *minor);
}

}  // namespace machines
