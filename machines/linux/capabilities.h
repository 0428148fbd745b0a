// The rights of this process beyond those of its user.
#pragma once

#include <linux/capability.h>

#include <array>
#include <span>

namespace machines {

// With these, root reads and replaces files in the folders of others.
inline constexpr std::array kCapabilitiesOfFiles = {CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH,
                                                    CAP_FOWNER};

// Gives up all capabilities but those of `kept` that the process has. It cannot get them back, but
// by starting a program that has them. If the kernel refuses, the process keeps what it has.
void KeepCapabilities(std::span<const int> kept);

}  // namespace machines
