#include "views/page_attributes.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <string_view>
#include <vector>

#include "views/attribute_meanings.h"
#include "views/field_texts.h"
#include "views/html.h"

namespace views {
namespace {

using drives::Attribute;
using drives::Drive;
using drives::Host;
using health::Grade;
using health::GradeRow;

// How far the value is from its threshold, for one that can be reached and need not be.
void AppendBar(std::string& page, const Attribute& attribute) {
  if (!attribute.valid || !drives::IsValidValue(attribute.threshold)) return;
  const int largest = std::max(attribute.value, attribute.threshold);
  const int scale = largest <= 100 ? 100 : largest <= 200 ? 200 : 253;
  const int distance = attribute.value - attribute.threshold;
  const std::string side =
      distance == 0 ? "at"
                    : fmt::format("{} {}", std::abs(distance), distance < 0 ? "below" : "above");
  Append(page,
         R"(<svg viewBox="0 0 101 10" preserveAspectRatio="none" role="img")"
         R"( aria-label="{} the threshold"><rect class="room" width="101" height="10"/>)"
         R"(<rect class="value" y="2" width="{}" height="6"/>)"
         R"(<rect class="limit" x="{}" width="1" height="10"/></svg>)",
         side, 100 * attribute.value / scale, 100 * attribute.threshold / scale);
}

void AppendCell(std::string& page, std::string_view text) { Append(page, "<td>{}</td>", text); }

void AppendTableStart(std::string& page, std::string_view caption,
                      const std::vector<std::string_view>& headings) {
  Append(page, "<table>\n<caption>{}</caption>\n<thead><tr>", caption);
  for (const std::string_view heading : headings) {
    Append(page, "<th scope=\"col\">{}</th>", heading);
  }
  page += "</tr></thead>\n<tbody>\n";
}

void AppendRowStart(std::string& page, const GradeRow& grade) {
  const bool isGood = grade.grade == Grade::kGood;
  page += isGood ? "<tr>" : fmt::format("<tr class=\"{}\">", ClassOf(grade.color));
}

void AppendRow(std::string& page, const Drive& drive, const health::Health& health,
               const Attribute& attribute, bool hasCounts) {
  const GradeRow& grade = health::RowOf(RowGrade(health, attribute));
  AppendRowStart(page, grade);
  Append(page, "<th scope=\"row\">{} {} <small>{}</small>", attribute.id,
         Escaped(health::NameText(attribute)), attribute.preFailure ? "pre-failure" : "life-span");
  const std::string word = RowText(health, attribute);
  if (word != health::RowOf(Grade::kGood).word) Append(page, " <strong>{}</strong>", word);
  AppendBar(page, attribute);
  page += "</th>";
  AppendCell(page, std::to_string(attribute.value));
  if (hasCounts) AppendCell(page, WorstText(attribute));
  AppendCell(page, std::to_string(attribute.threshold));
  if (hasCounts) AppendCell(page, RawText(attribute) + GrowthText(drive, attribute));
  page += "</tr>\n";
}

}  // namespace

void AppendAttributes(std::string& page, const Drive& drive, const health::Health& health) {
  if (drive.attributes.empty()) return;
  const bool hasCounts = std::ranges::any_of(
      drive.attributes, [](const Attribute& attribute) { return attribute.counts.has_value(); });
  const std::vector<std::string_view> headings =
      hasCounts ? std::vector<std::string_view>{"Name", "Value", "Worst", "Threshold", "Raw"}
                : std::vector<std::string_view>{"Name", "Value", "Threshold"};
  AppendTableStart(page, "Attributes", headings);
  for (const Attribute& attribute : drive.attributes)
    AppendRow(page, drive, health, attribute, hasCounts);
  page += "</tbody>\n</table>\n";
}

void AppendFigures(std::string& page, const Drive& drive, const health::Health& health) {
  if (!drive.recorded || drive.recorded->figures.empty()) return;
  AppendTableStart(page, drive.attributes.empty() ? "Logs" : "Statistics", {"Name", "Value"});
  for (const drives::Figure& figure : drive.recorded->figures) {
    const GradeRow& grade = health::RowOf(FigureGrade(health, figure));
    AppendRowStart(page, grade);
    Append(page, "<th scope=\"row\">{}", Escaped(figure.name));
    if (grade.grade != Grade::kGood) Append(page, " <strong>{}</strong>", grade.word);
    Append(page, "</th><td>{}</td></tr>\n", FigureText(figure) + GrowthText(drive, figure));
  }
  page += "</tbody>\n</table>\n";
}

void AppendSelfTests(std::string& page, const Drive& drive) {
  if (!drive.recorded || drive.recorded->selfTests.empty()) return;
  AppendTableStart(page, "Self-tests", {"Self-test", "Result", "Power-on time", "Sector"});
  for (const drives::SelfTest& test : drive.recorded->selfTests) {
    const auto [type, status, hours, sector] = TextsOf(test, drive);
    AppendRowStart(page, health::RowOf(test.passed == false ? Grade::kCaution : Grade::kGood));
    Append(page, "<th scope=\"row\">{}</th>", type);
    for (const std::string& text : {status, hours, sector}) AppendCell(page, text);
    page += "</tr>\n";
  }
  page += "</tbody>\n</table>\n";
}

void AppendMeanings(std::string& page, const Host& host) {
  std::set<std::uint8_t> ids;
  for (const Drive& drive : host.drives) {
    for (const Attribute& attribute : drive.attributes) ids.insert(attribute.id);
  }
  std::erase_if(ids, [](std::uint8_t id) { return MeaningOf(id).empty(); });
  if (ids.empty()) return;
  page += "<details>\n<summary>What these attributes mean</summary>\n<ul>\n";
  for (const std::uint8_t id : ids) Append(page, "<li>{}: {}</li>\n", id, MeaningOf(id));
  page += "</ul>\n</details>\n";
}

}  // namespace views
