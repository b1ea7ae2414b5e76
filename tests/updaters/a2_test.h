// SPDX-License-Identifier: MIT
// The ground of the A2 tests: a small flash and a keyboard that answers. The flash has four sectors
// of 8 words (16 bytes) from word 0x100; a sector is two blocks of 4 words.
#pragma once

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <vector>

#include "tests/support/answering_keyboard.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/link_test.h"
#include "tests/support/recorded_log.h"
#include "tests/support/recorded_pause.h"
#include "updaters/a2_update.h"

namespace hollin {

using Messages = std::vector<Bytes>;

inline Messages Joined(std::initializer_list<Messages> parts) {
  Messages all;
  for (const Messages& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

inline A2Description SmallA2Flash() {
  A2Description flash;
  flash.flashModel = "TS-8";
  flash.reservedSectors = {0x7FFF};
  flash.blockSize = 4;
  flash.eraseCycleCount = 2;
  flash.eraseAddrs = {0x555, 0x777};
  flash.eraseData = {0xAA, 0x30};
  flash.programCycleCount = 1;
  flash.programAddrs = {0x555};
  flash.programData = {0xA0};
  flash.writeBufferCycleCount = 1;
  flash.writeBufferAddrs = {0x2AA};
  flash.writeBufferData = {0x25};
  flash.programBufferCycleCount = 1;
  flash.programBufferAddrs = {0x2AB};
  flash.programBufferData = {0x29};
  flash.sectorAddrs = {0x100, 0x108, 0x110, 0x118};
  return flash;
}

class A2Test : public LinkTest {
 protected:
  A2Test() { update.flash = SmallA2Flash(); }

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

  [[nodiscard]] bool RunSteps(uint32_t count) {
    for (uint32_t index = 0; index < count; index++) {
      if (!update.RunStep(index)) return false;
    }
    return true;
  }

  [[nodiscard]] size_t Erases() const { return keyboard.CountOf(0x02) / 2; }

  RecordedPause pauses;
  RecordedLog log;
  AnsweringKeyboard keyboard{hidapi};
  A2Update update{"/nonexistent.ini", "/nonexistent.bin"};
};

}  // namespace hollin
