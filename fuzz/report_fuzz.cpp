// Reads any bytes as a report, and makes every form of it. The JSON document must say what the
// report says. The forms for people and monitoring must have nothing in them that controls a
// terminal.
#include <rapidjson/document.h>
#include <utf8.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "drives/report_lines.h"
#include "views/views.h"

static void Require(bool isSo) {
  if (!isSo) std::abort();
}

// Checks the text as a terminal takes it, without the code that makes the forms.
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
  const drives::Host host = drives::ParseReport({reinterpret_cast<const char*>(data), size});
  const std::string json = views::JsonText(host, "");
  rapidjson::Document document;
  Require(!document.Parse(json.data(), json.size()).HasParseError());
  Require(document["drives"].Size() == host.drives.size());
  Require(document["not_read"].Size() == host.notRead.size());
  const std::string summary = views::Check(host, {}).summary;
  RequirePrintable(summary + views::TableText(host, {}) + views::MetricsText(host));
  RequirePrintable(views::BriefText(host, {}) + views::PageText(host, {}));
  Require(summary.find('\n') == std::string::npos);
  return 0;
}
