// The end of a program that breaks the platform's rules: where the platform would
// go on with damaged state, this layer stops and says so.
#pragma once

namespace platform {

// Prints "CALL: FAULT" on standard error and aborts.
[[noreturn]] void Misuse(const char* call, const char* fault);

}  // namespace platform
