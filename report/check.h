// A report's verdict for monitoring: one line, and the status that plug-ins share.
#pragma once

#include <string>
#include <vector>

#include "report/report.h"

namespace report {

// The numbers are the statuses that monitoring plug-ins end with.
enum class Verdict { kOk = 0, kWarning = 1, kCritical = 2, kUnknown = 3 };

struct Judgement {
  Verdict verdict;
  // "smartprobe CRITICAL: failing: /dev/rdisk1; not read: /dev/rdisk4", for one line
  std::string summary;
};

// `faults` are the words for what keeps a good verdict from being trusted, the report's damage
// among them; a damaged report is never well, whatever they are. A drive that fails is worse than
// one that nothing is known about, and that is worse than a worn one: the condition of an unknown
// drive may be any. A report without drives is unknown, since a probe that finds nothing would else
// look well for ever. The summary names every device that it tells of, whatever its length.
Judgement Check(const Report& report, const std::vector<std::string>& faults);

}  // namespace report
