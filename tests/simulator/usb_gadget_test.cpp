// SPDX-License-Identifier: MIT
#include "simulator/usb_gadget.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
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

  // What a simulator with this process id has made, and leaves when it is killed.
  std::string LeaveGadget(const std::string& owner) const {
    std::string left = gadgets + "/ts30-" + owner;
    for (const char* each : kMade) fs::create_directories(left + "/" + each);
    fs::create_symlink(left + "/functions/hid.usb0", left + "/configs/c.1/hid.usb0");
    return left;
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
  const std::string left = LeaveGadget("4194305");  // beyond the largest process id
  EXPECT_FALSE(Plug());
  EXPECT_FALSE(fs::is_symlink(left + "/configs/c.1/hid.usb0"));
  for (const char* each : kMade) EXPECT_FALSE(fs::exists(left + "/" + each)) << each;
}

TEST_F(UsbGadgetTest, TheGadgetOfAKilledSimulatorIsClearedThoughAnotherProcessHasItsId) {
  const std::string left = LeaveGadget(std::to_string(getppid()));
  EXPECT_FALSE(Plug());
  EXPECT_FALSE(fs::exists(left + "/configs/c.1/strings/0x409"));
}

TEST_F(UsbGadgetTest, TheGadgetOfALivingSimulatorStays) {
  const std::string other = LeaveGadget("4194305");
  const int lock = open(other.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  ASSERT_EQ(flock(lock, LOCK_EX | LOCK_NB), 0);
  EXPECT_FALSE(Plug());
  EXPECT_TRUE(fs::exists(other + "/configs/c.1/strings/0x409"));
  close(lock);
}

TEST_F(UsbGadgetTest, AnotherProgramsGadgetStays) {
  fs::create_directories(gadgets + "/ts3-1/strings/0x409");
  EXPECT_FALSE(Plug());
  EXPECT_TRUE(fs::exists(gadgets + "/ts3-1/strings/0x409"));
}

}  // namespace
}  // namespace hollin::simulator
