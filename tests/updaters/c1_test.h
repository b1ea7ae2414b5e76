// SPDX-License-Identifier: MIT
// The ground of the C1 tests: a flash with sectors of 32 bytes, of which the second is reserved,
// and a keyboard that answers.
#pragma once

#include <algorithm>
#include <memory>
#include <vector>

#include "tests/support/answering_keyboard.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/link_test.h"
#include "tests/support/recorded_log.h"
#include "tests/support/recorded_pause.h"
#include "updaters/c1_update.h"

namespace hollin {

using Messages = std::vector<Bytes>;

class C1Test : public LinkTest {
 protected:
  C1Test() {
    update.flash.sectorSize = 32;
    update.flash.reservedSectors = {0x20};
    keyboard.headerEcho = 11;
    keyboard.blockStatus = {Hex("F4")};
  }

  void SetUp() override { OpenLink(); }

  // An answer too many or too few shows here.
  void TearDown() override {
    EXPECT_EQ(hidapi.replies.size(), 0U);
    LinkTest::TearDown();
  }

  [[nodiscard]] bool Plan(const Bytes& image) {
    update.image = std::make_unique<uint8_t[]>(image.size());
    std::copy(image.begin(), image.end(), update.image.get());
    update.imageLength = static_cast<int64_t>(image.size());
    return update.PlanSteps();
  }

  // Plans for an image of which only the length is there.
  [[nodiscard]] bool PlanLength(int64_t length) {
    update.imageLength = length;
    return update.PlanSteps();
  }

  [[nodiscard]] bool RunSteps(uint32_t count) {
    for (uint32_t index = 0; index < count; index++) {
      if (!update.RunStep(index)) return false;
    }
    return true;
  }

  RecordedPause pauses;
  RecordedLog log;
  AnsweringKeyboard keyboard{hidapi};
  C1Update update{"/nonexistent.ini", "/nonexistent.bin"};
};

}  // namespace hollin
