// The page: one document of HTML without a script, a font or anything else from elsewhere. Every
// text of a drive goes through Escaped().
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "report/field_texts.h"
#include "report/forms.h"
#include "report/health.h"

namespace report {
namespace {

constexpr std::string_view kStyle = R"(
:root { color-scheme: light dark; --back: #fff; --text: #1c2127; --weak: #5a646f; --line: #d5dbe1;
  --bad: #b3261e; --warn: #8a5800; --good: #1f7a3a; --room: #e3e7eb }
@media (prefers-color-scheme: dark) { :root { --back: #14181c; --text: #e4e8ec; --weak: #9aa5b0;
  --line: #363e46; --bad: #ff8a80; --warn: #f2b84b; --good: #6cc784; --room: #2c333a } }
@media print { :root { color-scheme: light; --back: #fff; --text: #000; --weak: #444; --line: #bbb;
  --bad: #b3261e; --warn: #8a5800; --good: #1f7a3a; --room: #e3e7eb }
  tr, h3, dl { break-inside: avoid; break-after: auto } h3 { break-after: avoid } }
* { box-sizing: border-box }
body { margin: 0 auto; max-width: 60rem; padding: 1rem; background: var(--back); color: var(--text);
  font: 1rem/1.45 system-ui, sans-serif; overflow-wrap: anywhere }
h1 { font-size: 1.6rem; line-height: 1.2; margin: .5rem 0 } h2 { font-size: 1.2rem; margin: 2rem 0 .5rem }
h3 { font-size: 1.05rem; margin: 0 } ul { padding-left: 1.2rem; margin: .5rem 0 }
p { margin: .5rem 0 } .weak, dt, th { color: var(--weak) }
section { border: 1px solid var(--line); border-left: .35rem solid currentcolor; border-radius: .4rem;
  padding: .8rem 1rem; margin: 1rem 0 } section > * { color: var(--text) }
.failing, section .failing { color: var(--bad) } .good, svg { color: var(--good) }
.warning, section .warning { color: var(--warn) } tr[class] svg { color: inherit }
dl { display: flex; flex-wrap: wrap; gap: .3rem 1.6rem; margin: .5rem 0 } dt { font-size: .8rem }
dd { margin: 0 } table { border-collapse: collapse; width: 100%; margin-top: .6rem;
  font-variant-numeric: tabular-nums } caption { text-align: left; font-weight: 600 }
th, td { padding: .3rem .4rem; border-top: 1px solid var(--line); text-align: right;
  vertical-align: top } th { font-weight: normal; font-size: .8rem; white-space: nowrap }
th:first-child { text-align: left; width: 50% }
tbody th { color: inherit; font-size: inherit; white-space: normal }
small { color: var(--weak); white-space: nowrap }
svg { display: block; width: 100%; height: .5rem; margin-top: .25rem }
.room { fill: var(--room) } .value { fill: currentcolor } .limit { fill: var(--text) }
@media (max-width: 36rem) { body { padding: .5rem } section { padding: .6rem }
  table { font-size: .85rem } th { font-size: .7rem } th, td { padding: .25rem .15rem }
  th:first-child { width: 38% } td:last-child { min-width: 4.8rem } }
)";

std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      case '\'':
        escaped += "&#39;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

// The class of the elements that have a grade's colour.
std::string_view ClassOf(Health health) {
  if (health == Health::kGood) return "good";
  return health == Health::kFailing ? "failing" : "warning";
}

// "1 failing, 1 not read, 2 OK": the grades, the worst first.
std::string CountsText(const Report& report) {
  std::array<std::size_t, 6> counts{};
  for (const Drive& drive : report.drives) counts.at(static_cast<std::size_t>(HealthOf(drive)))++;
  std::string text;
  const auto append = [&text](std::size_t count, std::string_view what) {
    if (count == 0) return;
    text.append(text.empty() ? "" : ", ").append(std::to_string(count)).append(" ").append(what);
  };
  for (std::size_t i = counts.size(); i-- > 0;) {
    const auto health = static_cast<Health>(i);
    append(counts.at(i), HealthWord(health));
    if (health == Health::kFailing) append(report.notRead.size(), "not read");
  }
  return text.empty() ? "none" : text;
}

void AppendItem(std::string& page, std::string_view text, Health health) {
  page.append("<li class=\"").append(ClassOf(health)).append("\">");
  page.append(Escaped(text)).append("</li>\n");
}

// What a clean bill rests on: counts of sectors are in recordings alone.
std::string_view AllClearText(const Report& report) {
  if (!report.notATA) return "No threshold is reached. Lost sectors are not in the report.";
  return "No threshold is reached, and no drive counts a lost sector.";
}

using Drives = std::vector<const Drive*>;

void AppendItems(std::string& items, const Drives& drives) {
  for (const Drive* drive : drives) {
    const Health health = HealthOf(*drive);
    if (health == Health::kGood) continue;
    AppendItem(items, PathText(drive->device) + ": " + HealthText(*drive), health);
  }
}

void AppendFaults(std::string& page, const Report& report, const Drives& drives) {
  page += "<h2>What is wrong</h2>\n";
  std::string items;
  if (report.damage) {
    AppendItem(items,
               "The report is damaged; this is what came before. " + DamageText(*report.damage),
               Health::kFailing);
  }
  const auto firstNotFailing = std::ranges::find_if(
      drives, [](const Drive* drive) { return HealthOf(*drive) != Health::kFailing; });
  AppendItems(items, {drives.begin(), firstNotFailing});
  for (const UnreadDrive& drive : report.notRead) {
    AppendItem(items, "Could not be read: " + UnreadText(drive), Health::kFailing);
  }
  AppendItems(items, {firstNotFailing, drives.end()});
  if (drives.empty() && report.notRead.empty()) {
    AppendItem(items, "No drives were found.", Health::kNoAttributes);
  }
  if (items.empty()) {
    page.append("<p>").append(AllClearText(report)).append("</p>\n");
  } else {
    page.append("<ul>\n").append(items).append("</ul>\n");
  }
}

void AppendFact(std::string& page, std::string_view name, std::string_view fact) {
  if (fact.empty()) return;
  page.append("<div><dt>").append(name).append("</dt><dd>").append(Escaped(fact));
  page += "</dd></div>\n";
}

// How far the value is from its threshold, for one that can be reached and need not be.
void AppendBar(std::string& page, const Attribute& attribute) {
  if (!attribute.valid || attribute.threshold < 1 || attribute.threshold > 253) return;
  const int largest = std::max(attribute.value, attribute.threshold);
  const int scale = largest <= 100 ? 100 : largest <= 200 ? 200 : 253;
  const int distance = attribute.value - attribute.threshold;
  const auto percent = [scale](int value) { return std::to_string(100 * value / scale); };
  const std::string_view side = distance < 0 ? " below" : " above";
  page.append(R"(<svg viewBox="0 0 101 10" preserveAspectRatio="none" role="img" aria-label=")");
  page += distance == 0 ? "at" : std::to_string(std::abs(distance)).append(side);
  page += " the threshold\">";
  page += R"(<rect class="room" width="101" height="10"/><rect class="value" y="2" width=")" +
          percent(attribute.value) + R"(" height="6"/><rect class="limit" x=")" +
          percent(attribute.threshold) + R"(" width="1" height="10"/></svg>)";
}

void AppendCell(std::string& page, std::string_view text) {
  page.append("<td>").append(text).append("</td>");
}

void AppendRow(std::string& page, const Attribute& attribute, bool hasCounts) {
  const Health health = HealthOf(attribute);
  const bool isGood = health == Health::kGood;
  page += isGood ? "<tr>" : std::string("<tr class=\"").append(ClassOf(health)).append("\">");
  page.append("<th scope=\"row\">")
      .append(std::to_string(attribute.id))
      .append(" ")
      .append(Escaped(NameText(attribute)))
      .append(" <small>");
  page.append(attribute.preFailure ? "pre-failure" : "life-span").append("</small>");
  if (!isGood) page.append(" <strong>").append(HealthWord(health)).append("</strong>");
  AppendBar(page, attribute);
  page += "</th>";
  AppendCell(page, std::to_string(attribute.value));
  if (hasCounts) AppendCell(page, WorstText(attribute));
  AppendCell(page, std::to_string(attribute.threshold));
  if (hasCounts) AppendCell(page, RawText(attribute));
  page += "</tr>\n";
}

void AppendAttributes(std::string& page, const Drive& drive) {
  if (drive.attributes.empty()) return;
  const bool hasCounts = std::ranges::any_of(
      drive.attributes, [](const Attribute& attribute) { return attribute.counts.has_value(); });
  const std::vector<std::string_view> headings =
      hasCounts ? std::vector<std::string_view>{"Name", "Value", "Worst", "Threshold", "Raw"}
                : std::vector<std::string_view>{"Name", "Value", "Threshold"};
  page += "<table>\n<caption>Attributes</caption>\n<thead><tr>";
  for (const std::string_view heading : headings) {
    page.append("<th scope=\"col\">").append(heading).append("</th>");
  }
  page += "</tr></thead>\n<tbody>\n";
  for (const Attribute& attribute : drive.attributes) AppendRow(page, attribute, hasCounts);
  page += "</tbody>\n</table>\n";
}

void AppendDrive(std::string& page, const Drive& drive) {
  const Health health = HealthOf(drive);
  const std::string product = FieldText(drive.product);
  page.append("<section class=\"").append(ClassOf(health)).append("\">\n<h3>");
  page.append(Escaped(product.empty() ? PathText(drive.device) : product));
  page.append(": <span class=\"").append(ClassOf(health)).append("\">").append(HealthWord(health));
  page += "</span></h3>\n<dl>\n";
  AppendFact(page, "Path", PathText(drive.device));
  AppendFact(page, "Serial number", FieldText(drive.serial));
  AppendFact(page, "Revision", FieldText(drive.revision));
  AppendFact(page, "Capacity", FieldText(drive.capacity));
  AppendFact(page, "Temperature", TemperatureText(drive));
  if (drive.date) AppendFact(page, "Read", DateText(*drive.date));
  page += "</dl>\n";
  const std::string faults = FaultsText(drive);
  if (!faults.empty()) {
    page.append("<p class=\"").append(ClassOf(health)).append("\">").append(Escaped(faults));
    page += "</p>\n";
  }
  AppendAttributes(page, drive);
  page += "</section>\n";
}

Drives WorstFirst(const Report& report) {
  Drives drives;
  for (const Drive& drive : report.drives) drives.push_back(&drive);
  std::ranges::stable_sort(drives, std::ranges::greater(),
                           [](const Drive* drive) { return HealthOf(*drive); });
  return drives;
}

}  // namespace

std::string HTMLText(const Report& report, std::chrono::sys_seconds date) {
  const Drives drives = WorstFirst(report);
  const std::string title = "Drives: " + CountsText(report);
  std::string page =
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" +
      title + "</title>\n<style>" + std::string(kStyle) + "</style>\n</head>\n<body>\n<h1>" +
      title + "</h1>\n<p class=\"weak\">Page of " + DateText(date) + ".</p>\n";
  AppendFaults(page, report, drives);
  if (!drives.empty()) page += "<h2>Drives</h2>\n";
  for (const Drive* drive : drives) AppendDrive(page, *drive);
  const std::vector<std::string> others = OtherDisksTexts(report);
  if (!others.empty()) page += "<h2>Not in this report</h2>\n";
  for (const std::string& other : others)
    page.append("<p>").append(Escaped(other)).append("</p>\n");
  return page + "</body>\n</html>\n";
}

}  // namespace report
