// SPDX-License-Identifier: MIT
// What the command line says. For the same outcome the window says the same.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "package/package_writer.h"

namespace hollin::words {

inline constexpr std::string_view kUnableToOpen = "Unable to open dat file: ";       // + path
inline constexpr std::string_view kFormatError = "Checksum or file format error: ";  // + path
inline constexpr std::string_view kMoreThanOneDevice = "More than one device! Remove some devices";
inline constexpr std::string_view kUpdateCompleted =
    "Update completed, please use the TS30 power switch to restart the keyboard.";
inline constexpr std::string_view kUpdateError = "Update Error!";
inline constexpr std::string_view kAnotherAtWork = "another Hollin is at work";

// What to do about a refusal.
inline constexpr std::string_view kCloseIt = "Close it, then try again.";
inline constexpr std::string_view kInspectTells = "hollin-cli inspect PACKAGE tells why.";

inline constexpr std::string_view kUpdateStopped =
    "Update stopped. The keyboard must be updated again before it can be used.";
inline constexpr std::string_view kInterrupted = "Interrupted before anything was written.";
inline constexpr std::string_view kNotAcknowledged =
    "Warning: the keyboard did not acknowledge the end of the update.";
inline constexpr std::string_view kAdviceNotToStop =
    "The keyboard is being written: if the update is interrupted now, it must be updated again "
    "before it can be used. Press Ctrl-C again to stop all the same.";
inline constexpr std::string_view kStopping =
    "Stopping after this step. Press Ctrl-C again to end at once.";

// The message of a package about its missing keyboard, in the lines that it has.
[[nodiscard]] std::vector<std::string> LinesOfNotConnected(const std::string& message);

// Why a package cannot be made; empty for kNone.
[[nodiscard]] std::string_view OfRefusal(PackRefusal refusal);

}  // namespace hollin::words
