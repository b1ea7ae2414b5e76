// SPDX-License-Identifier: MIT
#include "cli/devices_command.h"

#include <gtest/gtest.h>

#include <sstream>

#include "cli/json.h"
#include "tests/cli/fake_surroundings.h"

namespace hollin {
namespace {

class DevicesCommandTest : public ::testing::Test {
 protected:
  ExitCode Run(bool json = false) {
    out.str("");
    return RunDevicesCommand({.json = json}, {.out = out, .err = err}, machine.surroundings);
  }

  FakeSurroundings machine;
  std::ostringstream out, err;
};

TEST_F(DevicesCommandTest, WithoutAKeyboardNoneIsListed) {
  EXPECT_EQ(Run(), ExitCode::kKeyboard);
  EXPECT_EQ(out.str(), "Keyboards with the ids 1c3e:2b91: 0 (an update wants exactly one)\n");
}

TEST_F(DevicesCommandTest, TheOneKeyboardIsListed) {
  machine.Plug("hidraw3", "1-2", "A1B2");
  EXPECT_EQ(Run(), ExitCode::kDone);
  EXPECT_EQ(out.str(),
            "Keyboards with the ids 1c3e:2b91: 1\n"
            "1: /dev/hidraw3, serial number A1B2, may be opened\n");
}

TEST_F(DevicesCommandTest, RightsAndUsersAreTold) {
  machine.Plug("hidraw3", "1-2");
  machine.closed = {"/dev/hidraw3"};
  machine.AddUser(999001, "other", "/dev/hidraw3");
  machine.AddUser(999002, "stranger", "/dev/hidraw4");
  EXPECT_EQ(Run(), ExitCode::kDone);
  EXPECT_EQ(out.str(),
            "Keyboards with the ids 1c3e:2b91: 1\n"
            "1: /dev/hidraw3, may not be opened, in use by other (999001)\n");
}

TEST_F(DevicesCommandTest, AKeyboardThatIsListedTwiceIsTold) {
  machine.Plug("hidraw3", "1-2");
  machine.Plug("hidraw4", "1-2");  // another interface of the same device
  machine.Plug("hidraw5", "1-3");  // another keyboard
  machine.surroundings.listed.push_back({.path = "/dev/hidraw5", .usage = 2});
  EXPECT_EQ(Run(), ExitCode::kKeyboard);
  EXPECT_EQ(out.str(),
            "Keyboards with the ids 1c3e:2b91: 4 (an update wants exactly one)\n"
            "1: /dev/hidraw3, may be opened\n"
            "2: /dev/hidraw4, may be opened, the same keyboard as 1\n"
            "3: /dev/hidraw5, may be opened\n"
            "4: /dev/hidraw5, may be opened, the same keyboard as 3\n");
}

TEST_F(DevicesCommandTest, OneSerialNumberIsOneKeyboard) {
  machine.surroundings.listed = {{.path = "a", .serial = "7"}, {.path = "b", .serial = "7"}};
  EXPECT_EQ(Run(true), ExitCode::kKeyboard);
  EXPECT_EQ(Json::parse(out.str())["devices"][1]["sameAs"], 0);
}

TEST_F(DevicesCommandTest, OneSerialNumberOnTwoUsbDevicesIsTwoKeyboards) {
  machine.Plug("hidraw3", "1-2", "7");
  machine.Plug("hidraw4", "1-3", "7");
  EXPECT_EQ(Run(true), ExitCode::kKeyboard);
  EXPECT_EQ(Json::parse(out.str())["devices"][1]["sameAs"], Json());
}

TEST_F(DevicesCommandTest, AsJson) {
  machine.Plug("hidraw3", "1-2", "A1B2");
  EXPECT_EQ(Run(true), ExitCode::kDone);
  EXPECT_EQ(Json::parse(out.str()), Json::parse(R"({
    "vendorId": 7230, "productId": 11153, "count": 1,
    "devices": [{"path": "/dev/hidraw3", "serialNumber": "A1B2", "interface": 0, "usagePage": 0,
                 "usage": 0, "mayOpen": true, "users": [], "sameAs": null}]})"));
}

}  // namespace
}  // namespace hollin
