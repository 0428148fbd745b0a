// The forms in which a host is shown: each a text, whole, in UTF-8. The texts of drives may hold
// anything; what people and monitoring see of them has no control character and none that reorders
// text. Of a damaged report each form shows what came before the damage; only the page and the
// check mention the damage.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "drives/facts.h"
#include "health/grades.h"

namespace views {

struct Screen {
  std::size_t columns = 80;
  bool hasColors = false;
};

// For people: a heading for each drive, its attributes in columns, and at the end the disks that
// could not be read or are not in the report. Says so where a whole report has no drives.
std::string TableText(const drives::Host& host, const Screen& screen);

// For people with many drives: a line for each drive, below it what is wrong, and the same end.
std::string BriefText(const drives::Host& host, const Screen& screen);

// For people with a browser: a page of HTML that needs nothing else, with what is wrong first.
// `date` is that of the page.
std::string PageText(const drives::Host& host, std::chrono::sys_seconds date);

// One JSON document in ASCII, a drive a line, whose texts are the report's exactly. "flags" is the
// report's number, "flags_ata" the same with its bytes exchanged, as the standard numbers its
// bits. `version` is the program's.
std::string JsonText(const drives::Host& host, std::string_view version);

// The text format of Prometheus. No series occurs twice: devices of one path are numbered
// in the label "drive", and of the attributes of one identifier the worst counts. A label has at
// most 64 characters, since it is kept with every series of the drive.
std::string MetricsText(const drives::Host& host);

// What has changed from `before` to `now`, a line a change, the worst first: drives that are gone,
// new, back, worse, better, no longer readable or readable again, and counts that grew. A drive is
// known by its product and serial number. Paths, hours and temperatures that make no grade are no
// change.
std::string ChangesText(const drives::Host& before, const drives::Host& now);

// What to do about what is wrong: a sentence a line for each grade that a drive or a reason has.
std::string AdviceText(const drives::Host& host);

struct Judgement {
  health::Verdict verdict;
  // "smartprobe CRITICAL: failing: /dev/rdisk1; not read: /dev/rdisk4 | drives=3 failing=1 ...",
  // for one line, with every device that it is about, however many, and the performance data of
  // plug-ins
  std::string summary;
};

// For monitoring. `faults`, words for the summary, keep the verdict from being good; so does the
// report's damage, whether it is among them or not. The first of these that is so makes the
// verdict:
// - critical: a drive is failing;
// - unknown: there is a fault, a device that could not be read or tells nothing of its health, or
//   no drive, not even one that is gone. Any of these may hide a drive that is failing;
// - warning: a drive is of any other grade but kGood.
// Disks that were not asked are named, and change nothing.
Judgement Check(const drives::Host& host, const std::vector<std::string>& faults);

}  // namespace views
