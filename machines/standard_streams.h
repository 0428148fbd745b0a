// The state of the standard streams at the start of a program. In a header of its own,
// since programs of every machine source need it.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

namespace machines {

// A file that is opened gets the lowest free descriptor. With O_PATH a closed standard
// stream is taken but stays as good as closed: it can be neither read nor written.
inline void FillClosedDescriptors() {
  int descriptor = -1;
  do {
    descriptor = open("/", O_PATH);
  } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
  if (descriptor >= 0) close(descriptor);
}

// To be called before any file is opened. A reader of the output that goes away, or a
// limit on the size of files, is a failed write like any other, and no file that is
// opened later becomes a standard stream.
inline void PrepareStandardStreams() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  FillClosedDescriptors();
}

}  // namespace machines
