// SPDX-License-Identifier: MIT
#include "simulator/usb_gadget.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <utility>
#include <vector>

#include "simulator/host_message.h"

namespace hollin::simulator {
namespace {

namespace fs = std::filesystem;

constexpr char kNamePrefix[] = "ts30-";

// The folders of a description within the gadget's own, outer ones first; the kernel fills each
// with its attributes, and they go in the opposite order.
constexpr std::array kFolders{"strings/0x409", "functions/hid.usb0", "configs/c.1",
                              "configs/c.1/strings/0x409"};
constexpr char kLink[] = "configs/c.1/hid.usb0";

// An attribute is written by a single call; the kernel's verdict is the call's.
bool WriteAttribute(const std::string& path, ByteView value) {
  const int attribute = open(path.c_str(), O_WRONLY | O_CLOEXEC);
  if (attribute < 0) return false;
  const ssize_t written = write(attribute, value.data(), value.size());
  close(attribute);
  return written == static_cast<ssize_t>(value.size());
}

bool WriteAttribute(const std::string& path, const std::string& value) {
  const std::string line = value + "\n";
  return WriteAttribute(path, Bytes(line.begin(), line.end()));
}

void RemoveDescription(const std::string& folder) {
  static_cast<void>(WriteAttribute(folder + "/UDC", std::string()));
  unlink((folder + "/" + kLink).c_str());
  std::for_each(kFolders.rbegin(), kFolders.rend(),
                [&](const char* each) { rmdir((folder + "/" + each).c_str()); });
  rmdir(folder.c_str());
}

// Names in a folder, in order; none when it is not there.
std::vector<std::string> Names(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    names.push_back(entry.path().filename());
  }
  std::ranges::sort(names);
  return names;
}

std::string HexId(uint16_t id) {
  std::array<char, 8> text{};
  std::snprintf(text.data(), text.size(), "0x%04x", id);
  return text.data();
}

}  // namespace

UsbGadget::UsbGadget(Settings settings)
    : settings(std::move(settings)),
      folder(this->settings.gadgets + "/" + kNamePrefix + std::to_string(getpid())) {}

UsbGadget::~UsbGadget() {
  Unplug();
  if (described) RemoveDescription(folder);
}

bool UsbGadget::Plug(std::string& problem) {
  if (!described) {
    problem = "cannot describe a USB gadget in " + settings.gadgets +
              " (it takes root, the module libcomposite and configfs)";
    RemoveOrphans();
    described = mkdir(folder.c_str(), 0755) == 0;
    if (!described || !Describe()) return false;
  }
  problem = "no free USB device controller in " + settings.controllers +
            " (the module dummy_hcd provides one without hardware)";
  if (!Bind()) return false;
  problem = "cannot open the gadget's device";
  return OpenNode();
}

// A simulator that was killed could not remove its gadget, which would keep the controller.
void UsbGadget::RemoveOrphans() const {
  for (const std::string& name : Names(settings.gadgets)) {
    if (!name.starts_with(kNamePrefix)) continue;
    const int owner = std::atoi(name.c_str() + sizeof kNamePrefix - 1);
    if (owner <= 0 || (kill(owner, 0) != 0 && errno == ESRCH)) {
      RemoveDescription(settings.gadgets + "/" + name);
    }
  }
}

bool UsbGadget::Describe() const {
  for (const char* each : kFolders) {
    if (mkdir((folder + "/" + each).c_str(), 0755) != 0) return false;
  }
  const std::string function = folder + "/functions/hid.usb0";
  return WriteAttribute(folder + "/idVendor", HexId(settings.vendorId)) &&
         WriteAttribute(folder + "/idProduct", HexId(settings.productId)) &&
         WriteAttribute(folder + "/strings/0x409/manufacturer", "Varnholt") &&
         WriteAttribute(folder + "/strings/0x409/product", "TS30 (simulated)") &&
         WriteAttribute(folder + "/configs/c.1/strings/0x409/configuration", "Update mode") &&
         WriteAttribute(function + "/protocol", "0") &&
         WriteAttribute(function + "/subclass", "0") &&
         WriteAttribute(function + "/report_length", std::to_string(kReportSize)) &&
         WriteAttribute(function + "/report_desc", ReportDescriptorBytes(settings.descriptor)) &&
         symlink(function.c_str(), (folder + "/" + kLink).c_str()) == 0;
}

// Once plugged in, the keyboard comes back to the same controller.
bool UsbGadget::Bind() {
  std::vector<std::string> candidates{controller.empty() ? settings.controller : controller};
  if (candidates[0].empty()) candidates = Names(settings.controllers);
  const auto bound = std::ranges::find_if(candidates, [this](const std::string& each) {
    return WriteAttribute(folder + "/UDC", each);
  });
  if (bound == candidates.end()) return false;
  controller = *bound;
  return true;
}

// The kernel tells the node's numbers; the second is the number in its name.
bool UsbGadget::OpenNode() {
  std::string numbers;
  std::ifstream(folder + "/functions/hid.usb0/dev") >> numbers;
  const std::string node = "/dev/hidg" + numbers.substr(numbers.find(':') + 1);
  file = open(node.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
  return file >= 0;
}

void UsbGadget::Unplug() {
  if (file < 0) return;
  close(file);
  file = -1;
  static_cast<void>(WriteAttribute(folder + "/UDC", std::string()));
}

std::optional<Bytes> UsbGadget::Read() {
  Bytes report(kReportSize);
  const ssize_t size = read(file, report.data(), report.size());
  if (size <= 0) return std::nullopt;
  report.resize(static_cast<size_t>(size));
  return report;
}

bool UsbGadget::Write(ByteView report) {
  return write(file, report.data(), report.size()) >= 0 || errno != EAGAIN;
}

}  // namespace hollin::simulator
