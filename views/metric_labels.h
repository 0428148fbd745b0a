// The drives and attributes of a host with the labels of their series in Prometheus' text format.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "drives/facts.h"

namespace views {

struct Label {
  std::string_view name;
  std::string_view value;
};

// Those without a value are left out, which is the same to Prometheus. A long value is shortened:
// it is kept with every series of the drive.
std::string Labels(std::initializer_list<Label> labels);

// `ones` and then `others`, of which either may be no labels.
std::string JoinedLabels(std::string_view ones, std::string_view others);

// A drive or an attribute, borrowed from the host, with the labels of its series.
template <typename Subject>
struct Labelled {
  const Subject* subject;
  std::string labels;
};

struct Devices {
  std::vector<Labelled<drives::Drive>> read;
  std::vector<Labelled<drives::Attribute>> attributes;  // of all drives that were read
  std::vector<std::string> notRead;                     // their labels
  std::vector<std::string> gone;                        // their labels
};

// The devices of the host. No two have the same labels, nor two attributes of one drive.
Devices DevicesOf(const drives::Host& host);

}  // namespace views
