#include "machines/linux/sysfs_files.h"

#include <fcntl.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <charconv>
#include <cstddef>
#include <string_view>
#include <system_error>

#include "base/descriptor.h"

namespace machines {
namespace {

constexpr std::size_t kPageSize = 4096;

// All of `text` as a decimal number.
template <typename T>
std::optional<T> ParseDecimal(std::string_view text) {
  T value = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || stop != end) return std::nullopt;
  return value;
}

}  // namespace

std::optional<std::string> ReadFile(const std::filesystem::path& file) {
  const base::Descriptor input(open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  if (!input.IsOpen()) return std::nullopt;
  std::string content(kPageSize, '\0');
  std::size_t size = 0;
  while (size < content.size()) {
    const ssize_t count = read(input.Number(), &content[size], content.size() - size);
    if (count < 0) return std::nullopt;
    if (count == 0) break;
    size += static_cast<std::size_t>(count);
  }
  content.resize(size);
  return content;
}

std::string ReadText(const std::filesystem::path& file) {
  constexpr std::string_view kWhiteSpace = " \t\n";
  const std::string content = ReadFile(file).value_or("");
  const std::size_t first = content.find_first_not_of(kWhiteSpace);
  if (first == std::string::npos) return "";
  return content.substr(first, content.find_last_not_of(kWhiteSpace) + 1 - first);
}

std::optional<std::uint64_t> ReadNumber(const std::filesystem::path& file) {
  return ParseDecimal<std::uint64_t>(ReadText(file));
}

std::optional<dev_t> ReadDeviceNumber(const std::filesystem::path& file) {
  const std::string text = ReadText(file);
  const std::size_t colon = text.find(':');
  if (colon == std::string::npos) return std::nullopt;
  const auto major = ParseDecimal<unsigned int>(std::string_view(text).substr(0, colon));
  const auto minor = ParseDecimal<unsigned int>(std::string_view(text).substr(colon + 1));
  if (!major || !minor) return std::nullopt;
  return makedev(*major, *minor);
}

}  // namespace machines
