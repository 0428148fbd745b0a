// A program's input: a file by its name, or standard input.
#pragma once

#include <cstddef>
#include <string>

#include "base/descriptor.h"

namespace base {

// The file, opened for reading; "-" is standard input, which stays open when the result
// is closed. Throws std::system_error, whose what() names the file.
Descriptor OpenInput(const std::string& file);

// The first `limit` bytes of the file, or all of them if it is shorter. More is not read,
// so that an endless input ends. Throws as OpenInput does, also when reading fails, and
// std::bad_alloc; what was read by then is lost.
std::string ReadUpTo(std::size_t limit, const std::string& file);

}  // namespace base
