#include "views/attribute_meanings.h"

#include <algorithm>
#include <array>

namespace views {
namespace {

struct Meaning {
  std::uint8_t id;
  std::string_view text;
};

constexpr std::array kMeanings{
    Meaning{1, "Errors while reading that the drive corrected. The raw value is the maker's own."},
    Meaning{3, "How long the drive takes to spin up."},
    Meaning{4, "How often the drive was started and stopped."},
    Meaning{5, "Sectors that went bad and were replaced by spare ones. A sign of failure."},
    Meaning{7, "Errors while positioning the heads. The raw value is the maker's own."},
    Meaning{9, "How long the drive has been on."},
    Meaning{10, "How often the drive needed more than one try to spin up."},
    Meaning{12, "How often the drive was switched on."},
    Meaning{177, "How evenly the cells of an SSD are worn, and how much of their life is left."},
    Meaning{184, "Data that changed on their way through the drive. A sign of failure."},
    Meaning{187, "Errors that the drive could not correct and reported. A sign of failure."},
    Meaning{188, "Commands that took too long. Often the power supply or a cable."},
    Meaning{190, "The temperature of the air, or how far it is below 100 °C."},
    Meaning{192, "How often the power went while the drive was in use."},
    Meaning{193, "How often the heads were parked."},
    Meaning{194, "The temperature of the drive."},
    Meaning{196, "How often the drive replaced sectors, or tried to."},
    Meaning{197, "Sectors that cannot be read now and wait to be replaced. A sign of failure."},
    Meaning{198, "Sectors that could not be read in a scan. A sign of failure."},
    Meaning{199, "Errors between drive and computer. Usually a cable, and no sign of failure."},
    Meaning{200, "Errors while writing, for some makers."},
    Meaning{202, "On many SSDs, how much of their life is left. On hard disks the maker's own."},
    Meaning{231, "On many SSDs, how much of their life is left. On hard disks a temperature."},
    Meaning{232, "How much of an SSD's spare room is left, or of its life."},
    Meaning{233, "How much of an SSD's life is left."},
    Meaning{241, "How much was written in all. The unit is the maker's own."},
    Meaning{242, "How much was read in all. The unit is the maker's own."},
};

}  // namespace

std::string_view MeaningOf(std::uint8_t id) {
  const auto* const found = std::ranges::find(kMeanings, id, &Meaning::id);
  return found == kMeanings.end() ? "" : found->text;
}

}  // namespace views
