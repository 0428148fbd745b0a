// The answer to SMART RETURN STATUS, which stands in two registers of the drive.
#pragma once

#include "machines/linux/sense_data.h"

namespace machines {

enum class StatusAnswer {
  kNone,    // the command failed, or the registers hold neither of the two answers
  kUnsaid,  // the command succeeded, but the firmware of an adapter kept the registers
  kNotExceeded,
  kExceeded,  // the drive exceeded a threshold
};

StatusAnswer ReadReturnStatus(const CommandResult& result);

}  // namespace machines
