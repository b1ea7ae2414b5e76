// SPDX-License-Identifier: MIT
// An A1 update that is loaded, and a scripted keyboard that answers it.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

#include "tests/support/hex_bytes.h"
#include "tests/support/link_test.h"
#include "tests/support/recorded_log.h"
#include "tests/support/recorded_pause.h"
#include "tests/support/temp_folder.h"
#include "updaters/a1_update.h"

namespace hollin {

class A1Fixture : public LinkTest {
 protected:
  void TearDown() override {
    EXPECT_TRUE(pauses.lengths.empty());
    EXPECT_TRUE(log.lines.empty());
    LinkTest::TearDown();
  }

  // Loads an updater and opens the link. `transmission` are lines of that section.
  void Load(const Bytes& image, std::string_view transmission = "", std::string_view chip = "") {
    folder.Write("TEMP1.INI", "[Chip Info]\nChip Size=0x1000000\n" + std::string(chip) +
                                  "[Transmission Info]\n" + std::string(transmission));
    folder.Write("TEMP1.BIN", image);
    update = std::make_unique<A1Update>(folder.Path("TEMP1.INI"), folder.Path("TEMP1.BIN"));
    ASSERT_TRUE(update->LoadFiles());
    HidDevice::Close();
    OpenLink();
    hidapi.writes.clear();
  }

  // The answers to a block that is accepted.
  void AcceptBlock(const Bytes& header) {
    hidapi.Reply(header);
    hidapi.Reply(Hex("F4"));
    hidapi.Reply(Hex("D4"));
  }

  TempFolder folder;
  RecordedLog log;
  RecordedPause pauses;
  std::unique_ptr<A1Update> update;
};

}  // namespace hollin
