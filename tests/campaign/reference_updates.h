// SPDX-License-Identifier: MIT
// The updates that the fault campaign runs: every kind of flash and every way of writing it, alone
// and two in a package, each with its keyboard.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "simulator/keyboard.h"
#include "tests/campaign/reference_host.h"

namespace hollin::campaign {

struct ReferenceUpdate {
  std::string name;
  std::vector<ReferencePack> packs;
  simulator::KeyboardOptions keyboard;  // whose faults belong to the update
  uint32_t chipStart = 0;               // of its A2 chip, in words
};

// All chips of a keyboard, A1, A2 and C1, as this update leaves them; `planned` tells the places.
using Places = std::array<std::vector<ReferenceWrite>, 3>;
[[nodiscard]] Places PlannedPlaces(const ReferenceUpdate& update);

// "A1", "A2" or "C1", and the flash description of a pack.
[[nodiscard]] std::string DataTypeOf(const ReferencePack& pack);
[[nodiscard]] std::string DescriptionOf(const ReferencePack& pack);
[[nodiscard]] const Bytes& ImageOf(const ReferencePack& pack);

// The update as users have it.
[[nodiscard]] Bytes PackageOf(const ReferenceUpdate& update);

[[nodiscard]] std::vector<ReferenceUpdate> ReferenceUpdates();

}  // namespace hollin::campaign
