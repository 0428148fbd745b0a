// Files by their names, "-" among them: the reading of one, and what went wrong with one.
#pragma once

#include <cstddef>
#include <string>
#include <system_error>

#include "base/descriptor.h"

namespace base {

// Whether `file` names a standard stream: input where it is read, output where it is written.
inline bool IsStandardStream(const std::string& file) { return file == "-"; }

// An error whose what() is `file`, a colon and the meaning of errno. To be called right after the
// system call that failed, since any other may change errno.
std::system_error SystemError(const std::string& file);

// The file, opened for reading. Of standard input it is a second descriptor, with the same
// position, so that the stream stays open when the result is closed. A folder opens, and fails when
// it is read; a named pipe waits for its writer. Throws std::system_error.
Descriptor OpenInput(const std::string& file);

// The first `limit` bytes of the file, or all of them if it is shorter. More is not read,
// so that an endless input ends. Throws as OpenInput does, also when reading fails, and
// std::bad_alloc; what was read by then is lost.
std::string ReadUpTo(std::size_t limit, const std::string& file);

}  // namespace base
