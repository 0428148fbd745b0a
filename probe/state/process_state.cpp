#include "probe/state/process_state.h"

SInt32 gMySysVersion;
Boolean bLittleEndianCPU;
