// NVMe drives and SCSI disks by their logs: how they are judged, and what the forms say of them.
#include "machines/entries/device_entries.h"
#include "tests/support.h"
#include "tools/recorded_host.h"
#include "views/field_texts.h"
#include "views/views.h"

namespace test {

using Logs = std::map<std::string, Data, std::less<>>;

Entry Disk(const Logs& logs) {
  const DriveAnswers answers = {.date = Date(0), .logs = logs};
  Entry disk{"", machines::kOtherDiskClass, {}, {{.name = "Medium"}}, DriveOf(answers)};
  disk.properties["Device Characteristics"] = Dict({{"Product Name", Text("DISK")},
                                                    {"Serial Number", Text("S")},
                                                    {"Product Revision Level", Text("R")}});
  disk.children[0].properties = {{"BSD Name", Text("nvme0n1")},
                                 {"Size", Integer(1'000'204'886'016)}};
  return disk;
}

drives::Host HostOf(const Logs& logs) {
  return tools::ReadRecordedHost({.roots = {Disk(logs)}}, Date(0));
}

// "failing: why", or why it could not be read.
std::string Judgement(const Logs& logs) {
  const drives::Host host = HostOf(logs);
  if (host.drives.empty()) return views::UnreadText(host.notRead.at(0));
  return views::HealthText(health::HealthOf(host.drives.at(0)));
}

// A health log of 35 °C and 100 % spare, with other bytes.
Data HealthLog(const std::vector<std::pair<std::size_t, std::uint8_t>>& bytes = {}) {
  Data log(512);
  log[1] = 0x34;  // 308 K
  log[2] = 0x01;
  log[3] = 100;
  log[4] = 10;
  for (const auto& [offset, byte] : bytes) log.at(offset) = byte;
  return log;
}

// A log page of these parameters: code, value.
Data Page(std::uint8_t code, const std::vector<std::pair<std::uint8_t, Data>>& parameters) {
  Data page = {code, 0, 0, 0};
  for (const auto& [number, value] : parameters) {
    page.insert(page.end(), {0, number, 3, static_cast<std::uint8_t>(value.size())});
    page.insert(page.end(), value.begin(), value.end());
  }
  page[3] = static_cast<std::uint8_t>(page.size() - 4);
  return page;
}

// Self-tests of a SCSI disk: one that runs, and one that failed at sector 9.
Data SelfTestPage() {
  return Page(0x10, {{1, {0x2F, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},
                     {2, {0x47, 2, 1, 4, 0, 0, 0, 0, 0, 0, 0, 9, 3, 0x11, 0, 0}}});
}

Data Exception(std::uint8_t code, std::uint8_t qualifier) {
  return Page(0x2F, {{0, {code, qualifier, 38}}});
}

TEST(Logs, OfNVMeDrivesMakeGrades) {
  Data controller(512);
  controller[266] = 0x5D;  // 349 K is 76 °C
  controller[267] = 0x01;
  const auto at = [&](std::uint8_t kelvin) {
    return Logs{{"HealthLog", HealthLog({{1, kelvin}})}, {"IdentifyController", controller}};
  };
  const std::pair<Logs, std::string> kCases[] = {
      {{{"HealthLog", HealthLog()}}, "OK"},
      {{{"HealthLog", HealthLog({{0, 1}, {3, 9}})}},
       "failing: the available spare is below its threshold"},
      {{{"HealthLog", HealthLog({{0, 2}})}}, "hot: a temperature is above or below its threshold"},
      {{{"HealthLog", HealthLog({{0, 0x3C}})}},
       "failing: the reliability is degraded; the media are in read-only mode; the backup of the "
       "volatile memory has failed; the persistent memory region is read-only or unreliable"},
      {{{"HealthLog", HealthLog({{0, 0x80}})}}, "failing: an unknown critical warning (bit 7)"},
      {{{"HealthLog", HealthLog({{3, 10}})}}, "OK"},
      {{{"HealthLog", HealthLog({{3, 9}})}}, "failing: 9 % spare, threshold 10 %"},
      {{{"HealthLog", HealthLog({{5, 99}, {176, 9}})}}, "OK"},
      {{{"HealthLog", HealthLog({{5, 100}})}}, "worn: 100 % of its life used"},
      {{{"HealthLog", HealthLog({{160, 1}})}}, "caution: 1 media error"},
      {{{"HealthLog", HealthLog({{175, 1}})}}, "caution: 18446744073709551615 media errors"},
      {{{"HealthLog", HealthLog({{1, 0x57}})}}, "OK"},
      {{{"HealthLog", HealthLog({{1, 0x58}})}}, "hot: 71 °C"},
      {at(0x5C), "OK"},
      {at(0x5D), "hot: 76 °C, limit 76 °C"},
      {{{"HealthLog", Data(511, 1)}}, "/dev/nvme0n1, DISK, serial S: its health log is not whole"},
  };
  for (const auto& [logs, judgement] : kCases) EXPECT_EQ(Judgement(logs), judgement);
}

TEST(Logs, OfSCSIDisksMakeGrades) {
  const auto error = [](std::uint8_t page, Data count) {
    return Logs{{"LogPage02", Page(page, {{0, {9}}, {6, std::move(count)}})}};
  };
  const std::string kNoAnswer = "; the drive's own self-assessment: no answer";
  const Data kNoDefects = {0, 0x0C, 0, 0};
  const std::pair<Logs, std::string> kCases[] = {
      {{{"LogPage2F", Exception(0, 0)}}, "OK"},
      {{{"LogPage2F", Exception(0x5D, 0x10)}},
       "failing: the disk reports: Hardware impending failure general hard drive failure"},
      {{{"LogPage2F", Exception(0x0B, 0x03)}},
       "caution: the disk reports: Warning - background self-test failed"},
      {error(0x02, {0, 2}), "caution: 2 uncorrected write errors" + kNoAnswer},
      {error(0x03, {1, 0}), "caution: 256 uncorrected read errors" + kNoAnswer},
      {error(0x05, {1}), "caution: 1 uncorrected verify error" + kNoAnswer},
      {error(0x03, {0}), "OK: " + kNoAnswer.substr(2)},
      {{{"DefectListHeader", {0, 0x0D, 0, 16}}, {"LogPage2F", Exception(0, 0)}},
       "caution: 2 sectors reallocated"},
      {{{"DefectListHeader", {0, 0x08, 0, 16}}, {"LogPage2F", Exception(0, 0)}},
       "caution: 4 sectors reallocated"},
      {{{"LogPage11", Page(0x11, {{1, {0, 0, 0, 100}}})}, {"LogPage2F", Exception(0, 0)}},
       "worn: 100 % of its life used"},
      {{{"LogPage0D", Page(0x0D, {{0, {0, 60}}, {1, {0, 60}}})}, {"LogPage2F", Exception(0, 0)}},
       "hot: 60 °C, limit 60 °C"},
      {{{"LogPage0D", Page(0x0D, {{0, {0, 60}}, {1, {0, 0xFF}}})}, {"LogPage2F", Exception(0, 0)}},
       "OK"},
      {{{"LogPage10", SelfTestPage()}, {"LogPage2F", Exception(0, 0)}},
       "caution: last self-test failed: another segment failed at sector 9; self-test running"},
      // Sense data tell of an exception; most other codes are none. No defects are no health.
      {{{"DefectListHeader", kNoDefects},
        {"Sense", {0x70, 0, 0, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x5E}}},
       "nothing known: the disk sends no log page of its health"},
      {{{"Sense", {0x70, 0, 1, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x5D, 0x10}}},
       "failing: the disk reports: Hardware impending failure general hard drive failure"},
      {{{"Sense", {0x72, 1, 0x5D, 0x10, 0, 0, 0, 0}}},
       "failing: the disk reports: Hardware impending failure general hard drive failure"},
      {{{"LogPage2F", Exception(0x5D, 0x10)}, {"Sense", {0x72, 0, 0, 0, 0, 0, 0, 0}}},
       "failing: the disk reports: Hardware impending failure general hard drive failure"},
      // What occurs twice counts once.
      {{{"LogPage03", Page(3, {{6, {2}}, {6, {3}}})}, {"LogPage05", Page(3, {{6, {4}}})}},
       "caution: 2 uncorrected read errors" + kNoAnswer},
      // Nothing that could be good.
      {{{"LogPage0D", Page(0x0D, {{0, {0, 0xFF}}})},
        {"Sense", {0x70, 0, 0, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0, 0}}},
       "nothing known: the disk sends no log page of its health"},
      {{}, "nothing known: the disk sends no log page of its health" + kNoAnswer},
      {{{"LogPage2F", {0x2F, 0, 0, 99, 0, 0, 3, 9, 0x5D}}},
       "nothing known: the disk sends no log page of its health" + kNoAnswer},
  };
  for (const auto& [logs, judgement] : kCases) EXPECT_EQ(Judgement(logs), judgement);
  const std::string heat = Judgement({{"LogPage2F", Exception(0x0B, 0x01)}});
  EXPECT_TRUE(heat.starts_with("hot: the disk reports: Warning - ")) << heat;
}

// The whole document of a drive, but for what all drives have.
std::string Json(const Logs& logs) {
  const std::string json = views::JsonText(HostOf(logs), "");
  const std::size_t start = json.find("\"temperature_celsius\"");
  return json.substr(start, json.find(",\"attributes\"") - start);
}

TEST(Logs, StandInJsonByTheirKeys) {
  Data log = HealthLog({{0, 4},
                        {5, 255},
                        {112, 7},
                        {128, 0x10},
                        {129, 0x27},
                        {200, 0x11},
                        {201, 1},
                        {204, 0x10},
                        {205, 1}});
  std::fill_n(log.begin() + 32, 16, 0xFF);
  Data controller(512);
  controller[266] = 0x5D;
  controller[267] = 0x01;
  Data tests = {0, 0, 0, 0, 0x27, 3, 2, 0, 4, 1, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 9};
  tests.resize(564);
  EXPECT_EQ(
      Json({{"HealthLog", log}, {"IdentifyController", controller}, {"SelfTestLog", tests}}),
      R"("temperature_celsius":35,"capacity_bytes":1000204886016,)"
      R"("power_on_hours":10000,"power_cycles":7,"rotation_rate":0,"temperature_limit_celsius":76,)"
      R"("percentage_used":255,"nvme_smart_health_information_log":{"critical_warning":4,)"
      R"("temperature":35,"available_spare":100,"available_spare_threshold":10,)"
      R"("percentage_used":255,"data_units_read":340282366920938463463374607431768211455,)"
      R"("data_units_written":0,"host_reads":0,"host_writes":0,"controller_busy_time":0,)"
      R"("power_cycles":7,"power_on_hours":10000,"unsafe_shutdowns":0,"media_errors":0,)"
      R"("num_err_log_entries":0,"warning_temp_time":0,"critical_comp_time":0,)"
      R"("temperature_sensors":[0,-1]},"nvme_composite_temperature_threshold":{"warning":76},)"
      R"("last_self_test":{"type":"extended",)"
      R"("status":"completed: one or more segments failed, the first is 3","passed":false,)"
      R"("power_on_hours":260,"lba":9},)"
      R"("unix_time":978307200)");
  EXPECT_EQ(
      Json({{"LogPage03", Page(3, {{3, {1, 2}}, {5, {0x02, 0x54, 0x0B, 0xE4, 0x01}}, {6, {0}}})},
            {"LogPage02", Page(2, {{5, {7}}})},
            {"LogPage0D", Page(0x0D, {{0, {0, 33}}, {1, {0, 65}}})},
            {"LogPage0E", Page(0x0E, {{1, {'2', '0', '2', '4', '0', '7'}},
                                      {3, {0xFF, 0xFF, 0xFF, 0xFF}},
                                      {4, {0, 0, 1, 4}}})},
            {"LogPage11", Page(0x11, {{1, {0, 0, 0, 17}}})},
            {"LogPage10", SelfTestPage()},
            {"LogPage15", Page(0x15, {{0, {0, 0, 1, 4}}})},
            {"DefectListHeader", {0, 0x0C, 0, 0}}}),
      R"("temperature_celsius":33,"reallocated_sectors":0,)"
      R"("capacity_bytes":1000204886016,"power_on_hours":4,"power_cycles":260,)"
      R"("temperature_limit_celsius":65,"percentage_used":17,"scsi_error_counter_log":{)"
      R"("read":{"total_errors_corrected":258,"gigabytes_processed":10.000000001,)"
      R"("total_uncorrected_errors":0},"write":{"gigabytes_processed":0.000000007}},"scsi_start_stop_cycle_counter":{)"
      R"("year_of_manufacture":2024,"week_of_manufacture":7,"accumulated_start_stop_cycles":260},)"
      R"("scsi_percentage_used_endurance_indicator":17,"scsi_grown_defect_list":0,)"
      R"("last_self_test_status":15,"last_self_test":{"type":"short","status":"in progress"},)"
      R"("unix_time":978307200)");
}

TEST(Logs, AreShownInEveryForm) {
  const drives::Host host =
      HostOf({{"HealthLog", HealthLog({{0, 4}, {5, 3}, {48, 0xA0}, {49, 0x86}, {50, 0x01}})}});
  const std::string table = Replaced(views::TableText(host, {}), "(  +)", " ");
  EXPECT_TRUE(
      table.starts_with("/dev/nvme0n1: failing: the reliability is degraded\n"
                        " DISK, revision R, 1.00 TB, serial S, SSD, "))
      << table;
  for (const char* row :
       {"\nCritical warning 4 failing\n", "\nData units written 100000 (51.20 GB) OK\n",
        "\nPercentage used 3 % OK\n"}) {
    EXPECT_NE(table.find(row), std::string::npos) << row << table;
  }
  const std::string page = views::PageText(host, {});
  EXPECT_NE(page.find("<tr class=\"failing\"><th scope=\"row\">Critical warning <strong>failing"
                      "</strong></th><td>4</td></tr>"),
            std::string::npos)
      << page;
  const std::string metrics = views::MetricsText(host);
  const std::string labels = R"({device="/dev/nvme0n1",disk="nvme0n1",product="DISK",serial="S")";
  for (const std::string& sample :
       {"smartprobe_drive_info" + labels + R"(,revision="R",capacity="1.00 TB",protocol="NVMe"} 1)",
        "smartprobe_drive_wear_ratio" + labels + "} 0.03",
        "smartprobe_drive_threshold_exceeded" + labels + "} 1",
        "smartprobe_drive_errors" + labels + R"(,kind="media"} 0)"}) {
    EXPECT_NE(metrics.find("\n" + sample + "\n"), std::string::npos) << sample << metrics;
  }
}

}  // namespace test
