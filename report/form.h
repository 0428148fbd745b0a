// The forms in which a report is written again: table.cpp, json.cpp and prometheus.cpp
// show what each looks like.
#pragma once

#include <memory>
#include <string>

#include "report/report.h"

namespace report {

// Appends to a text that its maker was given and that its user may empty at any time.
class Form : public Listener {
 public:
  // To be called once, after the last drive.
  virtual void Finish() = 0;
};

// Each appends to `text`, which has to outlive the form.

// For people. Each drive is appended at once; only the names of failed devices are kept.
std::unique_ptr<Form> MakeTable(std::string& text, bool hasColors);

// One JSON document, a drive a line. As in the table, each drive is appended at once.
std::unique_ptr<Form> MakeJson(std::string& text);

// The text format of Prometheus. All is kept until the end, since the samples of a
// metric have to stand together.
std::unique_ptr<Form> MakePrometheus(std::string& text);

}  // namespace report
