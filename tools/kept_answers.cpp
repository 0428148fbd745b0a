#include "tools/kept_answers.h"

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

#include "base/dates.h"
#include "base/standard_streams.h"
#include "drives/identify_data.h"
#include "machines/entries/device_entries.h"
#include "machines/recorded/recording_files.h"

namespace tools {
namespace {

using platform::DriveAnswers;
using platform::Entry;

// By the drive's identity; nullopt: those of several drives, or none that can be kept.
using AnswersByIdentity = std::map<std::string, std::optional<DriveAnswers>>;

bool IsATA(const Entry& entry) { return entry.className != machines::kOtherDiskClass; }

bool CanBeKept(const Entry& entry, const DriveAnswers& answers, int days) {
  if (!answers.date || !answers.whyNotOpened.empty()) return false;
  if (IsATA(entry) && (!answers.enables || !answers.exceeded || !answers.data.succeeds)) {
    return false;
  }
  const std::chrono::seconds age = base::Now() - *answers.date;
  return age.count() >= 0 && age <= std::chrono::days(days);
}

std::string IdentityOf(const Entry& entry, const DriveAnswers& answers) {
  if (IsATA(entry)) return drives::Identity(answers.identify.Block().value_or(base::Block{}));
  return machines::IdentityOf(machines::Characteristic(entry, machines::kProductNameKey),
                              machines::Characteristic(entry, machines::kSerialNumberKey));
}

void Collect(const std::vector<Entry>& entries, int days, AnswersByIdentity& collected) {
  for (const Entry& entry : entries) {
    Collect(entry.children, days, collected);
    if (!entry.drive || entry.goneSince) continue;
    DriveAnswers answers = entry.drive();
    const std::string identity = IdentityOf(entry, answers);
    if (identity.empty()) continue;
    const auto [known, isNew] = collected.try_emplace(identity);
    if (isNew && CanBeKept(entry, answers, days)) {
      known->second = std::move(answers);
    } else if (isNew || known->second != answers) {
      known->second.reset();
    }
  }
}

AnswersByIdentity ReadAnswers(const char* program, const std::string& file, int days) {
  AnswersByIdentity collected;
  try {
    Collect(machines::ReadRecordingFile(file).roots, days, collected);
  } catch (const std::system_error& error) {
    if (error.code() != std::errc::no_such_file_or_directory)
      base::PrintError(program, error.what());
  } catch (const std::runtime_error& error) {
    base::PrintError(program, error.what());
  }
  return collected;
}

}  // namespace

machines::KeptAnswers ReadKeptAnswers(const char* program, const std::string& file, int days) {
  const auto kept = std::make_shared<const AnswersByIdentity>(ReadAnswers(program, file, days));
  return [kept](const std::string& identity) {
    const auto found = kept->find(identity);
    return found == kept->end() ? std::nullopt : found->second;
  };
}

}  // namespace tools
