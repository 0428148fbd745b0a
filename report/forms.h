// The forms in which a report is written again: each a text, whole, in UTF-8. The texts of
// a report come from drives and may hold anything; what people and monitoring see of them has
// no control character and none that reorders text. Of a damaged report each shows what came
// before the damage, and but for the page none tells of it.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

#include "report/report.h"

namespace report {

struct Screen {
  std::size_t columns = 80;
  bool hasColors = false;
};

// For people: a heading a drive, its attributes in columns, and at the end the devices that
// could not be read or were not looked at. Words for no drives where a whole report has none.
std::string TableText(const Report& report, const Screen& screen);

// For people with many drives: a line a drive, below it what is wrong, and the same end.
std::string BriefText(const Report& report, const Screen& screen);

// For people with a browser: a page of HTML that needs nothing else, with what is wrong first. Says
// also if the report is damaged. `date` is that of the page.
std::string HTMLText(const Report& report, std::chrono::sys_seconds date);

// One JSON document in ASCII, a drive a line, whose texts are the report's exactly. "flags" is the
// report's number, "flags_ata" the same with its bytes exchanged, as the standard numbers its
// bits. Throws where a text is not UTF-8, which ParseReport never gives.
std::string JsonText(const Report& report);

// The text format of Prometheus. No series is there twice: devices of one path are numbered
// in the label "drive", and of the attributes of one identifier one counts. A label has at most
// 64 characters, since it is kept with every series of the drive.
std::string PrometheusText(const Report& report);

}  // namespace report
