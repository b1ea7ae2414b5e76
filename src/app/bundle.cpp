// SPDX-License-Identifier: MIT
#include "app/bundle.h"

#include <sys/auxv.h>

#include <filesystem>
#include <system_error>

namespace hollin {
namespace {

// Without /proc: the file that the kernel was told to run, made absolute while the program still is
// in the folder that it was started in.
std::string StartedFile() {
  // NOLINTNEXTLINE(performance-no-int-to-ptr): the kernel hands the address over as a number
  const auto* const path = reinterpret_cast<const char*>(getauxval(AT_EXECFN));
  std::error_code failed;
  return path == nullptr ? "" : std::filesystem::canonical(path, failed).string();
}

}  // namespace

std::string BundlePath() {
  std::error_code failed;
  std::string executable = std::filesystem::read_symlink("/proc/self/exe", failed).string();
  if (failed) executable = StartedFile();
  return BundlePathOf(executable);
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
  if (!bundle.starts_with('/'))
    return {};  // the folder that the program was started in is not meant
  const std::string name = bundle.substr(bundle.rfind('/') + 1);
  std::string path = bundle;
  path.erase(path.find(name), name.size());
  return path + "Config.ini";
}

}  // namespace hollin
