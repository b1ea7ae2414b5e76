// SPDX-License-Identifier: MIT
// The user's folders by the XDG base directory rules: a variable counts only when it holds an
// absolute path, and without it the folder lies in the home folder. Where there is no home folder
// either, the path is empty. Nothing is made by asking.
#pragma once

#include <string>

namespace hollin {

// The name of the program's own files and folders in the user's.
inline constexpr char kApplicationId[] = "com.tovari.Hollin";

[[nodiscard]] std::string UserDataFolder();     // $XDG_DATA_HOME, else ~/.local/share
[[nodiscard]] std::string UserCacheFolder();    // $XDG_CACHE_HOME, else ~/.cache
[[nodiscard]] std::string UserRuntimeFolder();  // $XDG_RUNTIME_DIR, nothing else

// Makes a folder with all that are missing above it, each for the user alone. 0, or errno; a folder
// that is there already is no error.
[[nodiscard]] int MakeFolder(const std::string& path);

}  // namespace hollin
