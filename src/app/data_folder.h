// SPDX-License-Identifier: MIT
// The folder that holds the application's data. Paths are in the file system's own bytes.
#pragma once

#include <string>

#include "app/app_error.h"

namespace hollin {

// "com.tovari.Hollin" in the user's data folder; empty where the user has none. Makes nothing.
[[nodiscard]] std::string ApplicationDataFolder();

// Whether a folder or something else is at `path`. False, with `error`, when that cannot be told;
// when nothing is there, the error is kNoSuchFile of kFileErrorDomain.
[[nodiscard]] bool QueryFolder(const std::string& path, bool& isFolder, AppError& error);

// Makes the folder with all that are missing above it, for the user alone.
[[nodiscard]] bool CreateFolder(const std::string& path, AppError& error);

}  // namespace hollin
