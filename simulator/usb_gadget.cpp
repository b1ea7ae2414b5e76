// SPDX-License-Identifier: MIT
#include "simulator/usb_gadget.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
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
constexpr std::array kFolders{"strings/0x409", "configs/c.1", "configs/c.1/strings/0x409"};

// Each interface is a function that the configuration links to. The keyboard is the first.
constexpr std::array kFunctions{"hid.usb0", "hid.usb1"};

std::string FunctionFolder(const std::string& gadget, const std::string& name) {
  return gadget + "/functions/" + name;
}

std::string FunctionLink(const std::string& gadget, const std::string& name) {
  return gadget + "/configs/c.1/" + name;
}

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
  for (const char* each : kFunctions) {
    unlink(FunctionLink(folder, each).c_str());
    rmdir(FunctionFolder(folder, each).c_str());
  }
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

// A folder, opened and locked; -1 when somebody else has the lock or there is no such folder.
int LockFolder(const std::string& folder, int operation) {
  const int file = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (file < 0 || flock(file, operation) == 0) return file;
  close(file);
  return -1;
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
  if (claim >= 0) close(claim);
}

bool UsbGadget::Plug(std::string& problem) {
  if (!described) {
    problem = "cannot describe a USB gadget in " + settings.gadgets +
              " (it takes root, the module libcomposite and configfs)";
    if (!Claim() || !Describe()) return false;
  }
  problem = "no free USB device controller in " + settings.controllers +
            " (the module dummy_hcd provides one without hardware)";
  if (!Bind()) return false;
  problem = "cannot open the gadget's device";
  if (OpenNode()) return true;
  Unplug();
  return false;
}

// One simulator at a time: another would take a folder that is not locked yet for an orphan's.
bool UsbGadget::Claim() {
  const int all = LockFolder(settings.gadgets, LOCK_EX);
  if (all < 0) return false;
  RemoveOrphans();
  described = mkdir(folder.c_str(), 0755) == 0;
  if (described) claim = LockFolder(folder, LOCK_EX | LOCK_NB);
  close(all);
  return claim >= 0;
}

// A simulator that was killed could not remove its gadget, which would keep the controller.
void UsbGadget::RemoveOrphans() const {
  for (const std::string& name : Names(settings.gadgets)) {
    if (!name.starts_with(kNamePrefix)) continue;
    const std::string orphan = settings.gadgets + "/" + name;
    const int lock = LockFolder(orphan, LOCK_EX | LOCK_NB);
    if (lock < 0) continue;
    RemoveDescription(orphan);
    close(lock);
  }
}

bool UsbGadget::Describe() const {
  for (const char* each : kFolders) {
    if (mkdir((folder + "/" + each).c_str(), 0755) != 0) return false;
  }
  return WriteAttribute(folder + "/idVendor", HexId(settings.vendorId)) &&
         WriteAttribute(folder + "/idProduct", HexId(settings.productId)) &&
         WriteAttribute(folder + "/strings/0x409/manufacturer", "Varnholt") &&
         WriteAttribute(folder + "/strings/0x409/product", "TS30 (simulated)") &&
         WriteAttribute(folder + "/configs/c.1/strings/0x409/configuration", "Update mode") &&
         DescribeFunction(kFunctions[0]) &&
         (!settings.secondInterface || DescribeFunction(kFunctions[1]));
}

bool UsbGadget::DescribeFunction(const std::string& name) const {
  const std::string function = FunctionFolder(folder, name);
  return mkdir(function.c_str(), 0755) == 0 && WriteAttribute(function + "/protocol", "0") &&
         WriteAttribute(function + "/subclass", "0") &&
         WriteAttribute(function + "/report_length", std::to_string(kReportSize)) &&
         WriteAttribute(function + "/report_desc", ReportDescriptorBytes(settings.descriptor)) &&
         symlink(function.c_str(), FunctionLink(folder, name).c_str()) == 0;
}

// Once plugged in, the keyboard comes back to the same controller.
bool UsbGadget::Bind() {
  std::vector<std::string> candidates{controller.empty() ? settings.controller : controller};
  if (candidates[0].empty()) candidates = Names(settings.controllers);
  const auto taken = std::ranges::find_if(candidates, [this](const std::string& each) {
    return WriteAttribute(folder + "/UDC", each);
  });
  bound = taken != candidates.end();
  if (bound) controller = *taken;
  return bound;
}

// The kernel tells the node's numbers; the second is the number in its name.
bool UsbGadget::OpenNode() {
  std::string numbers;
  std::ifstream(FunctionFolder(folder, kFunctions[0]) + "/dev") >> numbers;
  const std::string node = "/dev/hidg" + numbers.substr(numbers.find(':') + 1);
  file = open(node.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
  return file >= 0;
}

void UsbGadget::Unplug() {
  if (file >= 0) close(file);
  file = -1;
  if (bound) static_cast<void>(WriteAttribute(folder + "/UDC", std::string()));
  bound = false;
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
