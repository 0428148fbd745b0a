// Reads files by name, where "-" is a standard stream, and makes errors that name the file.
#pragma once

#include <cstddef>
#include <string>
#include <system_error>

namespace base {

// Whether `file` means a standard stream: input when it is read, output when it is written.
inline bool IsStandardStream(const std::string& file) { return file == "-"; }

// An error whose what() is `file`, a colon and the meaning of errno. Call it right after the failed
// system call, because any other call may change errno.
std::system_error SystemError(const std::string& file);

// Reads from the open `descriptor` and appends to `bytes`, until `bytes` has `limit` bytes or the
// input ends. Returns false if a read fails: errno says why, and `bytes` keeps what came before.
bool ReadUpTo(std::size_t limit, int descriptor, std::string& bytes);

// The first `limit` bytes of the file, or all of them if it is shorter. It reads no more, so that
// an endless input ends too. Standard input stays open, at its new position. A named pipe waits for
// its writer. Throws std::system_error, which names the file, and std::bad_alloc.
std::string ReadUpTo(std::size_t limit, const std::string& file);

}  // namespace base
