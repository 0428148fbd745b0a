// An open file that closes itself. An error of that close is lost, so code that writes calls
// Release() and closes the file itself, to learn whether all data arrived.
#pragma once

#include <unistd.h>

#include <utility>

namespace base {

class Descriptor {
 public:
  Descriptor() = default;
  // Owns `number`, which open() returned. A negative number means no open file.
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(other.Release()) {}
  ~Descriptor() {
    if (IsOpen()) close(number_);
  }

  bool IsOpen() const { return number_ >= 0; }
  int Number() const { return number_; }  // stays owned here; -1 if no file is open

  // Gives up the number, which the caller has to close from now on.
  int Release() { return std::exchange(number_, -1); }

 private:
  int number_ = -1;
};

}  // namespace base
