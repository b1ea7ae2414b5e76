// SPDX-License-Identifier: MIT
// hidapi's list of keyboards, with what the kernel knows about each entry.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "cli/hidraw_nodes.h"
#include "cli/surroundings.h"

namespace hollin {

struct ReportedKeyboard {
  ListedKeyboard listed;
  bool mayOpen = false;
  std::vector<std::string> users{};
  std::optional<size_t> sameAs{};  // an entry before it that is the same keyboard
};

[[nodiscard]] std::vector<ReportedKeyboard> ReportKeyboards(const Surroundings& surroundings,
                                                            const std::vector<HidrawNode>& nodes);

}  // namespace hollin
