// SPDX-License-Identifier: MIT
#include "app/device_access.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

#include "tests/support/temp_folder.h"

namespace hollin {
namespace {

// HID devices in a folder.
class DeviceAccessTest : public ::testing::Test {
 protected:
  void AddDevice(const std::string& name, const std::string& id) {
    std::filesystem::create_directories(folder.Path("class/" + name + "/device"));
    folder.Write("class/" + name + "/device/uevent",
                 "DRIVER=hid-generic\nHID_ID=" + id + "\nHID_NAME=TS30\n");
    std::filesystem::create_directories(folder.Path("dev"));
    folder.Write("dev/" + name, "");
  }
  static void BecomeIf(bool isWanted, uid_t user) {
    if (!isWanted) return;
    EXPECT_EQ(setresuid(user, user, 0), 0);
  }
  // As the ordinary user that a test may not be.
  [[nodiscard]] bool IsDenied() const {
    const uid_t own = geteuid();
    const HidFolders folders{.classes = folder.Path("class"), .nodes = folder.Path("dev")};
    BecomeIf(own == 0, kNobody);
    const bool isDenied = IsAccessDenied(0x1C3E, 0x2B91, folders);
    BecomeIf(own == 0, 0);
    return isDenied;
  }
  void Allow(const std::string& name, std::filesystem::perms rights) {
    std::filesystem::permissions(folder.Path(), std::filesystem::perms(0755));
    std::filesystem::permissions(folder.Path("dev/" + name), rights);
  }

  static constexpr uid_t kNobody = 65534;
  static constexpr auto kAll = std::filesystem::perms(0666);
  static constexpr auto kReadOnly = std::filesystem::perms(0444);
  static constexpr auto kNone = std::filesystem::perms(0);
  TempFolder folder;
};

constexpr const char* kKeyboard = "0003:00001C3E:00002B91";

TEST_F(DeviceAccessTest, KeyboardThatMayBeReadAndWrittenIsAllowed) {
  AddDevice("hidraw0", kKeyboard);
  Allow("hidraw0", kAll);
  EXPECT_FALSE(IsDenied());
}

TEST_F(DeviceAccessTest, KeyboardThatMayNotBeWrittenIsDenied) {
  AddDevice("hidraw0", kKeyboard);
  Allow("hidraw0", kReadOnly);
  EXPECT_TRUE(IsDenied());
  Allow("hidraw0", kNone);
  EXPECT_TRUE(IsDenied());
}

TEST_F(DeviceAccessTest, OtherDevicesDoNotCount) {
  AddDevice("hidraw0", "0003:00001C3E:00002B92");
  AddDevice("hidraw1", "0003:00001C3F:00002B91");
  AddDevice("hidraw2", "0005:00001C3E:00002B91");
  for (const char* name : {"hidraw0", "hidraw1", "hidraw2"}) Allow(name, kNone);
  EXPECT_FALSE(IsDenied());
  AddDevice("hidraw3", kKeyboard);
  Allow("hidraw3", kNone);
  EXPECT_TRUE(IsDenied());
}

TEST_F(DeviceAccessTest, NodeThatIsGoneIsNotDenied) {
  AddDevice("hidraw0", kKeyboard);
  std::filesystem::remove(folder.Path("dev/hidraw0"));
  EXPECT_FALSE(IsDenied());
}

TEST_F(DeviceAccessTest, WithoutHidDevicesNothingIsDenied) {
  EXPECT_FALSE(IsDenied());
  EXPECT_FALSE(IsAccessDenied(0, 0));
}

}  // namespace
}  // namespace hollin
