// SPDX-License-Identifier: MIT
// hollin-cli doctor: why an update will not work, each cause with its evidence and cure. Changes
// nothing and opens no keyboard.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cli/arguments.h"
#include "cli/console.h"
#include "cli/surroundings.h"

namespace hollin {

struct Diagnosis {
  std::string_view code;  // "no-right"
  std::string evidence, cure;
};

[[nodiscard]] std::vector<Diagnosis> Diagnose(const Surroundings& surroundings);

[[nodiscard]] ExitCode RunDoctorCommand(const DoctorArguments& arguments, const Console& console,
                                        const Surroundings& surroundings);

}  // namespace hollin
