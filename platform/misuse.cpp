#include "platform/misuse.h"

#include <cstdio>
#include <cstdlib>

namespace platform {

void Misuse(const char* call, const char* fault) {
  std::fprintf(stderr, "%s: %s\n", call, fault);
  std::abort();
}

}  // namespace platform
