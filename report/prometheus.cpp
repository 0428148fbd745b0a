// The report in the text format of Prometheus, for a textfile collector.
#include <array>
#include <bitset>
#include <cstddef>
#include <initializer_list>
#include <string_view>
#include <utility>

#include "report/form.h"

namespace report {
namespace {

struct Label {
  std::string_view name;
  std::string_view value;
};

// A text has no line feed, which would have to be escaped too.
void AppendEscaped(std::string& text, std::string_view value) {
  for (const char c : value) {
    if (c == '\\' || c == '"') text += '\\';
    text += c;
  }
}

std::string Labels(std::initializer_list<Label> labels) {
  std::string text;
  for (const Label& label : labels) {
    if (!text.empty()) text += ',';
    text.append(label.name).append("=\"");
    AppendEscaped(text, label.value);
    text += '"';
  }
  return text;
}

// A metric with its samples so far.
struct Metric {
  std::string_view name;
  std::string_view help;
  std::string samples;

  void Add(std::string_view labels, unsigned value) {
    samples.append(name).append("{").append(labels).append("} ");
    samples.append(std::to_string(value)).append("\n");
  }
};

void AppendMetric(std::string& text, const Metric& metric) {
  text.append("# HELP ").append(metric.name).append(" ").append(metric.help).append("\n");
  text.append("# TYPE ").append(metric.name).append(" gauge\n").append(metric.samples);
}

class PrometheusForm : public Form {
 public:
  explicit PrometheusForm(std::string& text) : text_(text) {}

  void OnDrive(const Drive& drive) override {
    const std::string place = std::to_string(places_++);
    info_.Add(Labels({{"drive", place},
                      {"device", drive.device},
                      {"product", drive.product},
                      {"revision", drive.revision},
                      {"capacity", drive.capacity},
                      {"serial", drive.serial}}),
              1);
    const std::string labels = Labels({{"drive", place}, {"device", drive.device}});
    exceeded_.Add(labels, drive.thresholdExceeded ? 1 : 0);
    readFailed_.Add(labels, 0);
    AddAttributes(labels, drive);
  }

  void OnFailed(const std::string& device) override {
    const std::string place = std::to_string(places_++);
    readFailed_.Add(Labels({{"drive", place}, {"device", device}}), 1);
  }

  void Finish() override {
    for (const Metric* metric : {&info_, &exceeded_, &readFailed_, &value_, &threshold_, &reached_})
      AppendMetric(text_, *metric);
  }

 private:
  // A series may be there only once: the first line of an identifier counts.
  void AddAttributes(const std::string& driveLabels, const Drive& drive) {
    std::bitset<256> seen;
    for (const Attribute& attribute : drive.attributes) {
      if (seen.test(attribute.id)) continue;
      seen.set(attribute.id);
      AddAttribute(driveLabels, attribute);
    }
  }

  void AddAttribute(const std::string& driveLabels, const Attribute& attribute) {
    const std::string labels =
        driveLabels + "," +
        Labels({{"id", std::to_string(attribute.id)},
                {"name", attribute.name},
                {"kind", attribute.preFailure ? "pre-failure" : "life-span"}});
    value_.Add(labels, attribute.value);
    threshold_.Add(labels, attribute.threshold);
    reached_.Add(labels, attribute.reached ? 1 : 0);
  }

  std::string& text_;
  std::size_t places_ = 0;
  Metric info_{"smartprobe_drive_info", "What the drive is; always 1.", {}};
  Metric exceeded_{"smartprobe_drive_threshold_exceeded",
                   "Whether the drive reports that a threshold is exceeded.",
                   {}};
  Metric readFailed_{"smartprobe_drive_read_failed", "Whether the drive could not be read.", {}};
  Metric value_{"smartprobe_attribute_value", "The normalized value of the attribute.", {}};
  Metric threshold_{
      "smartprobe_attribute_threshold", "The threshold of the attribute's value.", {}};
  Metric reached_{"smartprobe_attribute_reached",
                  "Whether the attribute's value has reached its threshold.",
                  {}};
};

}  // namespace

std::unique_ptr<Form> MakePrometheus(std::string& text) {
  return std::make_unique<PrometheusForm>(text);
}

}  // namespace report
