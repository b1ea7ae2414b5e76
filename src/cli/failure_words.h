// SPDX-License-Identifier: MIT
// Words for a failed command: what went wrong, which command it was, and what the keyboard
// answered.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cli/failure_record.h"

namespace hollin::words {

[[nodiscard]] std::string_view OfReason(UpdateFailure reason);

// The name of a command from its first byte, with the flash address where it carries one.
[[nodiscard]] std::string OfCommand(ByteView command);

// All of it, line by line.
[[nodiscard]] std::vector<std::string> OfFailure(const RecordedFailure& failure);

}  // namespace hollin::words
