// Any bytes as a report: a value and, of that, each form. The document says what the value
// says, and what people and monitoring see has nothing in it that commands a terminal.
#include <utf8.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "report/forms.h"
#include "report/health.h"
#include "report/report_reader.h"

static void Require(bool isSo) {
  if (!isSo) std::abort();
}

// As a terminal takes the text, not as the forms make it.
static void RequirePrintable(std::string_view text) {
  static constexpr std::u32string_view kUnfit =
      U"\u061C\u200E\u200F\u2028\u2029\u202A\u202B\u202C\u202D\u202E\u2066\u2067\u2068\u2069";
  Require(utf8::is_valid(text.begin(), text.end()));
  for (const char32_t c : utf8::utf8to32(text)) {
    Require(c == '\n' || (c >= 0x20 && c < 0x7F) || c >= 0xA0);
    Require(kUnfit.find(c) == std::u32string_view::npos);
  }
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const report::Report report = report::ParseReport({reinterpret_cast<const char*>(data), size});
  const auto document = nlohmann::json::parse(report::JsonText(report));
  Require(document.at("drives").size() == report.drives.size());
  Require(document.at("not_read").size() == report.notRead.size());
  Require(report.drives.empty() ||
          document["drives"].back().at("serial") == report.drives.back().serial);
  const std::string summary = report::Check(report, {}).summary;
  RequirePrintable(summary + report::TableText(report, {}) + report::PrometheusText(report));
  RequirePrintable(report::BriefText(report, {}) + report::HTMLText(report, {}));
  Require(summary.find('\n') == std::string::npos);
  return 0;
}
