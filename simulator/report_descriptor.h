// SPDX-License-Identifier: MIT
// What the keyboard tells the system about its reports, in several forms that mean the same: 64
// bytes in, 64 bytes out, no report numbers. hidapi may list a keyboard once for each collection.
#pragma once

#include <optional>
#include <string_view>

#include "base/bytes.h"

namespace hollin::simulator {

enum class ReportDescriptor {
  kFlat,         // one collection
  kCollections,  // a second one beside it
  kNested,       // a second one within it
};

// Reads "flat", "collections" or "nested".
[[nodiscard]] std::optional<ReportDescriptor> ParseReportDescriptor(std::string_view name);
[[nodiscard]] Bytes ReportDescriptorBytes(ReportDescriptor descriptor);

}  // namespace hollin::simulator
