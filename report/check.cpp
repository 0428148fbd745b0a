#include "report/check.h"

#include <string_view>

#include "report/health.h"

namespace report {
namespace {

std::string Named(const std::string& device) { return device.empty() ? "(no path)" : device; }

const char* Word(Verdict verdict) {
  switch (verdict) {
    case Verdict::kOk:
      return "OK";
    case Verdict::kWarning:
      return "WARNING";
    case Verdict::kCritical:
      return "CRITICAL";
    case Verdict::kUnknown:
      break;
  }
  return "UNKNOWN";
}

// Appends `heading` and the names after it, if there are any.
void AppendGroup(std::string& text, std::string_view heading,
                 const std::vector<std::string>& names) {
  if (names.empty()) return;
  if (!text.empty()) text += "; ";
  text += heading;
  for (const std::string& name : names) {
    if (&name != &names.front()) text += ", ";
    text += name;
  }
}

}  // namespace

void Check::OnDrive(const Drive& drive) {
  ++drives_;
  const Health health = HealthOf(drive);
  if (health == Health::kFailing) failing_.push_back(Named(drive.device));
  if (health == Health::kWorn) worn_.push_back(Named(drive.device));
}

void Check::OnFailed(const std::string& device) { notRead_.push_back(Named(device)); }

void Check::AddProblem(const std::string& what) { problems_.push_back(what); }

Verdict Check::Worst() const {
  if (!failing_.empty()) return Verdict::kCritical;
  if (!notRead_.empty() || !problems_.empty() || drives_ == 0) return Verdict::kUnknown;
  return worn_.empty() ? Verdict::kOk : Verdict::kWarning;
}

std::string Check::Summary() const {
  std::string found;
  AppendGroup(found, "failing: ", failing_);
  AppendGroup(found, "not read: ", notRead_);
  AppendGroup(found, "", problems_);
  AppendGroup(found, "worn: ", worn_);
  if (found.empty() && drives_ == 0) found = "no drives";
  if (found.empty()) found = std::to_string(drives_) + (drives_ == 1 ? " drive" : " drives");
  return std::string("smartprobe ") + Word(Worst()) + ": " + found;
}

}  // namespace report
