// SPDX-License-Identifier: MIT
// Whole updates, from the bytes of a package to the bytes of a chip, on a keyboard in the same
// process: time passes for it as the update pauses. All chips begin full of kOld, so that a sector
// that was not erased shows.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/update_loop.h"
#include "base/pause.h"
#include "device/hid_device.h"
#include "package/dat_file_examine.h"
#include "package/package_writer.h"
#include "simulator/in_process_hidapi.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/temp_folder.h"

namespace hollin {

inline constexpr uint8_t kOld = 0x5A;

class SimulatedUpdateTest : public testing::Test {
 protected:
  SimulatedUpdateTest() {
    HidDevice::vendorId = simulator::KeyboardOptions().vendorId;
    HidDevice::productId = simulator::KeyboardOptions().productId;
    hidapi.recordCalls = false;
    SetPauseFunction([this](std::chrono::milliseconds length) { hidapi.PassTime(length); });
  }
  ~SimulatedUpdateTest() override {
    SetPauseFunction({});
    datFile.DeleteTempFiles();
    EXPECT_EQ(hidapi.openHandles, 0U);
    EXPECT_FALSE(hidapi.wouldBlock);
    hidapi.Reset();
  }

  simulator::Keyboard& Plug(simulator::KeyboardOptions options) {
    simulator::Keyboard& keyboard = hidapi.Attach(std::move(options));
    for (simulator::FlashMemory* memory :
         {&keyboard.A1().memory, &keyboard.A2().memory, &keyboard.C1().memory}) {
      static_cast<void>(memory->Program(0, Filled(memory->Size(), kOld)));
      memory->programmed.clear();
    }
    return keyboard;
  }

  [[nodiscard]] bool Load(const std::string& dataType, const std::string& description,
                          const Bytes& image) {
    Bytes file;
    EXPECT_EQ(WritePackage({.productModel = "TS30",
                            .firmwareVersion = "1",
                            .keys = {},
                            .packs = {{dataType, ViewOf(description), image}}},
                           file),
              PackRefusal::kNone);
    return datFile.OpenDatFile(folder.Write("package.dat", file)) && datFile.ExamineDatFile();
  }

  [[nodiscard]] UpdateOutcome Update() {
    return RunUpdate(datFile, [](int32_t /*value*/) {});
  }

  static Bytes Contents(const simulator::FlashMemory& memory) {
    return {memory.Contents().begin(), memory.Contents().end()};
  }

  simulator::InProcessHidapi& hidapi = simulator::InProcessHidapi::Instance();
  TempFolder folder;
  DatFileExamine datFile;
};

}  // namespace hollin
