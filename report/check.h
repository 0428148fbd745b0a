// A report's verdict for monitoring: one line, and the status that plug-ins share.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "report/report.h"

namespace report {

enum class Verdict { kOk = 0, kWarning = 1, kCritical = 2, kUnknown = 3 };

class Check : public Listener {
 public:
  void OnDrive(const Drive& drive) override;
  void OnFailed(const std::string& device) override;

  // What keeps the verdict from being trusted, such as a damaged report.
  void AddProblem(const std::string& what);

  // A drive that fails is worse than one that nothing is known about.
  Verdict Worst() const;

  // "smartprobe CRITICAL: failing: /dev/rdisk1; not read: /dev/rdisk4"
  std::string Summary() const;

 private:
  std::size_t drives_ = 0;
  std::vector<std::string> failing_;
  std::vector<std::string> worn_;
  std::vector<std::string> notRead_;
  std::vector<std::string> problems_;
};

}  // namespace report
