// SPDX-License-Identifier: MIT
// A machine with as many keyboards as a test wants, in folders that look like the kernel's.
#pragma once

#include <unistd.h>

#include <filesystem>
#include <set>
#include <string>

#include "cli/surroundings.h"
#include "tests/support/temp_folder.h"

namespace hollin {

class FakeSurroundings {
 public:
  FakeSurroundings() {
    surroundings.sysfs = folder.Path("sys");
    surroundings.proc = folder.Path("proc");
    surroundings.temp = folder.Path("tmp");
    surroundings.vendorText = "0x1c3e";
    surroundings.productText = "0x2b91";
    surroundings.vendorId = 0x1C3E;
    surroundings.productId = 0x2B91;
    surroundings.mayOpen = [this](const std::string& path) { return closed.count(path) == 0; };
    surroundings.isAnotherAtWork = [this] { return isAnotherAtWork; };
    surroundings.user = geteuid();
    std::filesystem::create_directories(folder.Path("tmp"));
  }

  // A node of the USB device `usb` (a name such as "1-2"), listed by hidapi too unless told not to.
  void Plug(const std::string& node, const std::string& usb, const std::string& serial = "",
            bool isListed = true, const std::string& ids = "00001C3E:00002B91") {
    const std::string device = "sys/devices/" + usb + "/" + usb + ":1.0/" + node + "-device";
    std::filesystem::create_directories(folder.Path(device));
    folder.Write("sys/devices/" + usb + "/idVendor", "1c3e\n");
    folder.Write(device + "/uevent", "DRIVER=hid-generic\nHID_ID=0003:" + ids + "\nHID_NAME=x\n");
    std::filesystem::create_directories(folder.Path("sys/class/hidraw/" + node));
    std::filesystem::create_directory_symlink(folder.Path(device),
                                              folder.Path("sys/class/hidraw/" + node + "/device"));
    if (!isListed) return;
    surroundings.listed.push_back({.path = "/dev/" + node, .serial = serial, .interface = 0});
  }

  // A process that has `path` open.
  void AddUser(int process, const std::string& name, const std::string& path) {
    const std::string files = "proc/" + std::to_string(process);
    std::filesystem::create_directories(folder.Path(files + "/fd"));
    folder.Write(files + "/comm", name + "\n");
    std::filesystem::create_symlink(path, folder.Path(files + "/fd/7"));
  }

  TempFolder folder;
  Surroundings surroundings;
  bool isAnotherAtWork = false;
  std::set<std::string> closed;  // nodes that may not be opened
};

}  // namespace hollin
