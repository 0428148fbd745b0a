// Many drives asked at once, each in a process of its own, so that one that takes its time, hangs
// or makes its process die holds up no other. What a drive is asked is not known here.
#pragma once

#include <chrono>
#include <functional>
#include <vector>

#include "platform/machine.h"

namespace machines {

// How long a drive may take. A healthy one that has to spin up needs some 20 seconds, and the
// kernel gives up most of those that hang in 30 to 50.
inline constexpr std::chrono::milliseconds kAnswerLimit = std::chrono::seconds(60);

// Told at the start, after each answer and at the end: for each drive whether it is still awaited.
using Progress = std::function<void(const std::vector<bool>& isAwaited)>;

// The answers of `drives`, in their order. Each is called in a child process, which has given up
// every descriptor of this one, and sends its answers through a pipe. A drive that has not answered
// after `limit` is given up: its answers say so, as do those of one whose child cannot be made or
// ends without them, and its child is killed but not waited for, since a process that hangs in the
// kernel cannot be ended. No child is waited for, so some may be left for the end of this process.
// Of words in the answers the first 255 bytes come through. The limit of open files becomes the
// highest that is allowed. Not for a program with threads.
std::vector<platform::DriveAnswers> AskAll(const std::vector<platform::Drive>& drives,
                                           std::chrono::milliseconds limit,
                                           const Progress& progress);

}  // namespace machines
