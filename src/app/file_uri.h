// SPDX-License-Identifier: MIT
// Paths as file URIs, byte by byte: a path need not be UTF-8.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace hollin {

// The URI of an absolute path.
[[nodiscard]] std::string FileUriOf(std::string_view path);

// The path that a URI names; nothing where it names no file of this computer.
[[nodiscard]] std::optional<std::string> PathOfFileUri(std::string_view uri);

}  // namespace hollin
