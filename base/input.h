// A program's input: a file by its name, or standard input.
#pragma once

#include <cstddef>
#include <string>

#include "base/descriptor.h"

namespace base {

// The file, opened for reading; "-" is standard input. Throws std::system_error,
// whose what() names the file.
Descriptor OpenInput(const std::string& file);

// The first `limit` bytes of OpenInput(file). The rest is not read, so that an endless
// input ends. Throws as OpenInput does.
std::string ReadUpTo(std::size_t limit, const std::string& file);

}  // namespace base
