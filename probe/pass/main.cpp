// The program's entry point, and nothing else.
#include "probe/pass/start_up.h"

int main(int /*argc*/, char ** /*argv*/, char ** /*envp*/) {
  RunProbe();
  return 0;
}
