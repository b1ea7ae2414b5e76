// SPDX-License-Identifier: MIT
// The ground of every test that speaks to a scripted keyboard: one keyboard attached, the link
// closed and as fresh as at the start of the program. In the end hidapi must have been used as it
// wants to be, and every list freed; a case that lets the keyboard fall silent takes its note out
// of `misuses`.
#pragma once

#include <gtest/gtest.h>

#include "device/hid_device.h"
#include "tests/support/scripted_hidapi.h"

namespace hollin {

class LinkTest : public ::testing::Test {
 protected:
  LinkTest() {
    hidapi = {};
    delete HidDevice::instance;
    HidDevice::instance = nullptr;
    HidDevice::instanceCount = 0;
    HidDevice::handle = nullptr;
    HidDevice::opened = false;
    HidDevice::vendorId = 0x1234;
    HidDevice::productId = 0xABCD;
    HidDevice::report.fill(0);
    HidDevice::lastFailure = UpdateFailure::kNone;
  }

  void TearDown() override {
    EXPECT_EQ(hidapi.misuses, std::vector<std::string>{});
    EXPECT_EQ(hidapi.unfreedLists, 0U);
  }

  // Opens the link and forgets how: what a case sees begins with its own calls.
  void OpenLink() {
    HidDevice::Instance();
    ASSERT_TRUE(HidDevice::Open());
    hidapi.calls.clear();
  }

  // A reply that comes after each message of up to 55 bytes.
  void AnswerEach(const Bytes& message) {
    hidapi.onWrite = [this, message](const Bytes& /*report*/) { hidapi.Reply(message); };
  }

  ScriptedHidapi& hidapi = Hidapi();
};

}  // namespace hollin
