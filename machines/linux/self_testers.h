// The self-testers of each kind of drive.
#pragma once

#include <memory>

#include "machines/linux/self_tester.h"

namespace machines {

// `readsLog`: whether the drive may be asked for its log of self-tests, too.
std::unique_ptr<SelfTester> MakeAtaSelfTester(int node, bool readsLog);
std::unique_ptr<SelfTester> MakeNvmeSelfTester(int node);
std::unique_ptr<SelfTester> MakeScsiSelfTester(int node);

}  // namespace machines
