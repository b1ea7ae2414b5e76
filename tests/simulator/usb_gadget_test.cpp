// SPDX-License-Identifier: MIT
#include "simulator/usb_gadget.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "tests/support/temp_folder.h"

namespace hollin::simulator {
namespace {

namespace fs = std::filesystem;

// What a simulator makes in its gadget's folder; the kernel removes what lies around it by itself.
constexpr const char* kMade[] = {"strings/0x409", "functions/hid.usb0",
                                 "configs/c.1/strings/0x409"};

// An ordinary folder takes the place of the kernel's configuration file system. The kernel would
// fill what is made in it with attributes; here there are none, so no gadget gets further.
class UsbGadgetTest : public testing::Test {
 protected:
  UsbGadgetTest() { fs::create_directory(gadgets); }

  // True if a gadget could be plugged in.
  bool Plug() {
    UsbGadget gadget({.vendorId = 0x1C3E,
                      .productId = 0x2B91,
                      .gadgets = gadgets,
                      .controllers = folder.Path("controllers")});
    return gadget.Plug(problem);
  }

  // What a simulator with this process id left when it was killed.
  std::string LeaveGadget(const std::string& owner) const {
    std::string left = gadgets + "/ts30-" + owner;
    for (const char* each : kMade) fs::create_directories(left + "/" + each);
    fs::create_symlink(left + "/functions/hid.usb0", left + "/configs/c.1/hid.usb0");
    return left;
  }

  static std::string EndedProcess() {
    const pid_t process = fork();
    if (process == 0) _exit(0);
    waitpid(process, nullptr, 0);
    return std::to_string(process);
  }

  TempFolder folder;
  std::string gadgets = folder.Path("usb_gadget");
  std::string problem;
};

TEST_F(UsbGadgetTest, WhereTheKernelHasNoGadgetsItSaysWhatItTakes) {
  fs::remove(gadgets);
  EXPECT_FALSE(Plug());
  EXPECT_EQ(problem, "cannot describe a USB gadget in " + gadgets +
                         " (it takes root, the module libcomposite and configfs)");
}

TEST_F(UsbGadgetTest, ADescriptionThatFailsIsCleared) {
  fs::create_directory(gadgets + "/mine");
  EXPECT_FALSE(Plug());
  ASSERT_TRUE(fs::exists(gadgets + "/mine"));
  fs::remove(gadgets + "/mine");
  EXPECT_TRUE(fs::is_empty(gadgets));
}

TEST_F(UsbGadgetTest, TheGadgetOfAKilledSimulatorIsCleared) {
  const std::string left = LeaveGadget(EndedProcess());
  EXPECT_FALSE(Plug());
  EXPECT_FALSE(fs::is_symlink(left + "/configs/c.1/hid.usb0"));
  for (const char* each : kMade) EXPECT_FALSE(fs::exists(left + "/" + each)) << each;
}

TEST_F(UsbGadgetTest, TheGadgetOfALivingSimulatorStays) {
  const std::string other = LeaveGadget(std::to_string(getppid()));
  EXPECT_FALSE(Plug());
  EXPECT_TRUE(fs::exists(other + "/configs/c.1/strings/0x409"));
}

TEST_F(UsbGadgetTest, AnotherProgramsGadgetStays) {
  fs::create_directories(gadgets + "/ts3-1/strings/0x409");
  EXPECT_FALSE(Plug());
  EXPECT_TRUE(fs::exists(gadgets + "/ts3-1/strings/0x409"));
}

}  // namespace
}  // namespace hollin::simulator
