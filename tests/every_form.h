// Every form of a recording, for what has to hold whatever is recorded.
#pragma once

#include <utility>

#include "platform/machine.h"
#include "tools/recorded_host.h"
#include "views/views.h"

namespace test {

// Throws as tools::ReadRecordedHost does.
inline void ShowInEveryForm(platform::Machine machine) {
  const drives::Host host = tools::ReadRecordedHost(std::move(machine), {});
  for (const auto form : {views::TableText, views::BriefText}) form(host, {});
  for (const auto form : {views::MetricsText, views::AdviceText}) form(host);
  views::PageText(host, {});
  views::JsonText(host, "");
  views::Check(host, {});
}

}  // namespace test
