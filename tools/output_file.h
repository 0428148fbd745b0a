// Writes the output of a program: a file, whole or not at all, or standard output, whose name is
// "-".
#pragma once

#include <string>
#include <string_view>

namespace tools {

// Throws std::runtime_error, which names the file, if WriteOutputFile could not write `file` now:
// its folder takes no new file, or it exists and is no regular file, such as a device, a folder or
// a link, which a rename must not replace. For use before long work. Leaves nothing behind.
// Standard output is not tried.
void CheckOutputFile(const std::string& file);

// Writes the bytes into a new file beside `file`, and renames it when it is whole and on the disk.
// A reader finds the old file or the new one; a failure leaves the old one. The new file has the
// mode of the old one, or 0666 without the bits of the umask. It belongs to the caller. The umask
// changes for a moment, so this is not for a program with threads. Signals wait until the file is
// written; only SIGKILL can leave the new file behind: `file`, a dot and six characters. Throws as
// CheckOutputFile does. Standard output is printed, as by base::Print.
void WriteOutputFile(const std::string& file, std::string_view bytes);

}  // namespace tools
