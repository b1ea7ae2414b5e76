// SPDX-License-Identifier: MIT
// What an update may erase, told a second time from docs/flash-descriptions.md and without the
// updaters' plans, and held against the messages that were sent.
#pragma once

#include <optional>
#include <vector>

#include "base/bytes.h"
#include "updaters/a2_description.h"
#include "updaters/c1_description.h"

namespace hollin::fuzz {

struct ErasePlan {
  bool isRefused = false;  // nothing at all is erased
  // The address that the sector of each step is erased at; nothing for a reserved one.
  std::vector<std::optional<uint32_t>> sectors;
  size_t eraseCycles = 1;  // messages of one erase; the sector's address is in the last
  size_t eraseSize = 0;    // of such a message
};

[[nodiscard]] ErasePlan ErasePlanOf(const A2Description& flash, size_t imageLength);
[[nodiscard]] ErasePlan ErasePlanOf(const C1Description& flash, size_t imageLength);

using Messages = std::vector<Bytes>;

// Put together from the reports of the program; one that broke off is there as far as it went.
[[nodiscard]] Messages MessagesOf(const std::vector<Bytes>& reports);

// Aborts unless the messages of a pack's steps, from the first one on as far as the update came,
// erase what the plan says and nothing else.
void RequirePlannedErases(const ErasePlan& plan, const std::vector<Messages>& steps);

}  // namespace hollin::fuzz
