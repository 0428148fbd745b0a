// A report's verdict for monitoring: one line, and the status that plug-ins share.
#pragma once

#include <string>
#include <vector>

#include "report/report.h"

namespace report {

enum class Verdict { kOk = 0, kWarning = 1, kCritical = 2, kUnknown = 3 };

struct Judgement {
  Verdict verdict;
  // "smartprobe CRITICAL: failing: /dev/rdisk1; not read: /dev/rdisk4", for one line
  std::string summary;
};

// `problems` are what else keeps a good verdict from being trusted, as the report's damage
// does. A drive that fails is worse than one that nothing is known about.
Judgement Check(const Report& report, const std::vector<std::string>& problems);

}  // namespace report
