// SPDX-License-Identifier: MIT
// Where the application lies: the bundle is a folder "Hollin.app" that holds the programs and their
// resources, in the build tree as in an installation; "Config.ini" lies beside it.
#pragma once

#include <string>

namespace hollin {

// The bundle of the running program: the nearest folder ending in .app above the executable with
// all links resolved, or the executable itself where there is none. No trailing slash; empty where
// the executable cannot be found out.
[[nodiscard]] std::string BundlePath();
[[nodiscard]] std::string BundlePathOf(const std::string& executable);

// The configuration file that belongs to a bundle. Empty, which is no file, unless the bundle's
// path is absolute.
[[nodiscard]] std::string ConfigPathOf(const std::string& bundle);

}  // namespace hollin
