// SPDX-License-Identifier: MIT
#include "app/bundle.h"

#include <filesystem>
#include <system_error>

namespace hollin {

std::string BundlePath() {
  std::error_code failed;
  return BundlePathOf(std::filesystem::read_symlink("/proc/self/exe", failed).string());
}

std::string BundlePathOf(const std::string& executable) {
  constexpr std::string_view kSuffix = ".app";
  size_t end = executable.rfind('/');
  while (end != std::string::npos && end > 0) {
    std::string folder = executable.substr(0, end);
    if (folder.ends_with(kSuffix)) return folder;
    end = executable.rfind('/', end - 1);
  }
  return executable;
}

// Deliberate: the first occurrence of the bundle's name is removed, wherever it stands. In a folder
// whose own name contains the bundle's, the file is looked for at the path that this leaves.
std::string ConfigPathOf(const std::string& bundle) {
  const size_t slash = bundle.rfind('/');
  const std::string name = slash == std::string::npos ? bundle : bundle.substr(slash + 1);
  std::string path = bundle;
  path.erase(path.find(name), name.size());
  return path + "Config.ini";
}

}  // namespace hollin
