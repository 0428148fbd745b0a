// Asks many drives in parallel, each in a process of its own, so that a drive that is slow, hangs
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

// Called at the start, whenever answers have come, and at the end. Says for each drive whether its
// answers are still awaited.
using Progress = std::function<void(const std::vector<bool>& isAwaited)>;

struct Query {
  platform::Drive drive;
  // Adds what is not needed as much. If it hangs, or ends the process, the answers before it count.
  std::function<void(platform::DriveAnswers&)> more = {};
};

// The answers to `queries`, in their order. Each drive is called in a child process, which gives up
// every descriptor of this one and sends the answers through a pipe. whyNotOpened says so if a
// drive has not answered after `limit`, or if its child cannot be made or ends without answers.
//
// A child that is late is killed but not waited for, because a process that hangs in the kernel
// cannot be ended. No child is waited for, so some may remain until this process ends. `progress`
// may be empty. The limit of open files becomes the highest that is allowed, and this process keeps
// only the capabilities that reading and writing files may take. Do not call this in a program with
// threads.
std::vector<platform::DriveAnswers> AskAll(const std::vector<Query>& queries,
                                           std::chrono::milliseconds limit,
                                           const Progress& progress);

}  // namespace machines
