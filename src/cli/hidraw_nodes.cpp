// SPDX-License-Identifier: MIT
#include "cli/hidraw_nodes.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace hollin {
namespace {

namespace fs = std::filesystem;

// Entries of a folder by name; none where it cannot be read.
std::vector<fs::path> EntriesOf(const fs::path& folder) {
  std::error_code failed;
  std::vector<fs::path> entries;
  for (fs::directory_iterator at(folder, failed), end; !failed && at != end; at.increment(failed)) {
    entries.push_back(at->path());
  }
  std::sort(entries.begin(), entries.end());
  return entries;
}

std::string Contents(const fs::path& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// "HID_ID=0003:00001C3E:00002B91": bus, vendor, product. An id of 0 stands for any, as in hidapi.
bool HasIds(const fs::path& device, const Surroundings& surroundings) {
  const std::string uevent = Contents(device / "uevent");
  const size_t at = uevent.find("HID_ID=");
  if (at == std::string::npos) return false;
  char* rest = nullptr;
  std::strtoul(uevent.c_str() + at + 7, &rest, 16);
  if (*rest != ':') return false;
  const auto vendor = static_cast<uint16_t>(std::strtoul(rest + 1, &rest, 16));
  if (*rest != ':') return false;
  const auto product = static_cast<uint16_t>(std::strtoul(rest + 1, &rest, 16));
  return (surroundings.vendorId == 0 || surroundings.vendorId == vendor) &&
         (surroundings.productId == 0 || surroundings.productId == product);
}

// The folder above a HID device that stands for the whole USB device.
std::string UsbDeviceOf(const fs::path& device) {
  std::error_code failed;
  fs::path folder = fs::canonical(device, failed);
  while (!failed && folder.has_relative_path()) {
    if (fs::exists(folder / "idVendor", failed)) return folder.string();
    folder = folder.parent_path();
  }
  return "";
}

bool HasOpen(const fs::path& process, const std::string& node) {
  const std::vector<fs::path> files = EntriesOf(process / "fd");
  return std::any_of(files.begin(), files.end(), [&](const fs::path& file) {
    std::error_code failed;
    return fs::read_symlink(file, failed) == node;
  });
}

std::vector<std::string> UsersOf(const std::string& node, const Surroundings& surroundings) {
  std::vector<std::string> users;
  for (const fs::path& process : EntriesOf(surroundings.proc)) {
    const std::string number = process.filename();
    if (number.find_first_not_of("0123456789") != std::string::npos) continue;
    if (number == std::to_string(getpid()) || !HasOpen(process, node)) continue;
    std::string name = Contents(process / "comm");
    name = name.substr(0, name.find('\n'));
    users.push_back(fmt::format("{} ({})", name.empty() ? "process" : name, number));
  }
  return users;
}

}  // namespace

std::vector<HidrawNode> FindHidrawNodes(const Surroundings& surroundings) {
  std::vector<HidrawNode> nodes;
  for (const fs::path& entry : EntriesOf(fs::path(surroundings.sysfs) / "class" / "hidraw")) {
    const fs::path device = entry / "device";
    if (!HasIds(device, surroundings)) continue;
    const std::string path = fs::path(surroundings.dev) / entry.filename();
    nodes.push_back({.path = path,
                     .usbDevice = UsbDeviceOf(device),
                     .mayOpen = surroundings.mayOpen(path),
                     .users = UsersOf(path, surroundings)});
  }
  return nodes;
}

}  // namespace hollin
