#include "machines/linux/capabilities.h"

#include <sys/capability.h>

#include <memory>
#include <type_traits>

namespace machines {
namespace {

using OwnedSet = std::unique_ptr<std::remove_pointer_t<cap_t>, decltype(&cap_free)>;

}  // namespace

void KeepCapabilities(std::span<const int> kept) {
  const OwnedSet before(cap_get_proc(), cap_free);
  const OwnedSet after(cap_init(), cap_free);
  if (!before || !after) return;
  for (const cap_value_t capability : kept) {
    cap_flag_value_t isPermitted = CAP_CLEAR;
    cap_get_flag(before.get(), capability, CAP_PERMITTED, &isPermitted);
    cap_set_flag(after.get(), CAP_PERMITTED, 1, &capability, isPermitted);
    cap_set_flag(after.get(), CAP_EFFECTIVE, 1, &capability, isPermitted);
  }
  cap_set_proc(after.get());
}

}  // namespace machines
