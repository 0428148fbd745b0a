// Files by their names, "-" among them: the reading of one, and what went wrong with one.
#pragma once

#include <cstddef>
#include <string>
#include <system_error>

namespace base {

// Whether `file` names a standard stream: input where it is read, output where it is written.
inline bool IsStandardStream(const std::string& file) { return file == "-"; }

// An error whose what() is `file`, a colon and the meaning of errno. To be called right after the
// system call that failed, since any other may change errno.
std::system_error SystemError(const std::string& file);

// Appends to `bytes` what comes from the open `descriptor`, until it has `limit` bytes or there is
// no more. False where reading fails: errno says why.
bool ReadUpTo(std::size_t limit, int descriptor, std::string& bytes);

// The first `limit` bytes of the file, or all of them if it is shorter. More is not read, so that
// an endless input ends. Standard input stays open, at its new position; a named pipe waits for its
// writer. Throws std::system_error, which names the file, and std::bad_alloc.
std::string ReadUpTo(std::size_t limit, const std::string& file);

}  // namespace base
