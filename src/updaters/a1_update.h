// SPDX-License-Identifier: MIT
// Writes an image into an A1 flash: block by block, each announced by a header with its own byte
// sum and acknowledged by two status bytes; at the end the keyboard sums everything that was
// written. docs/protocol.md holds the packets.
#pragma once

#include <cstdint>
#include <string>

#include "device/ax_update.h"
#include "updaters/a1_description.h"

namespace hollin {

class A1Update final : public AXUpdate {
 public:
  A1Update(std::string configPath, std::string imagePath);

  [[nodiscard]] bool LoadFiles() override;
  [[nodiscard]] bool CheckConfig() override;
  [[nodiscard]] bool PlanSteps() override;
  [[nodiscard]] bool CountSteps();  // one for each block of the image, begun ones too, and two more
  [[nodiscard]] bool RunStep(uint32_t index) override;  // writes block `index`
  [[nodiscard]] bool VerifyImage() override;

  A1Description flash;
  DescriptionListener listener = LogUnknown;  // told of each remark on the description
  uint32_t blockLength = 0;                   // bytes of the block being written
  uint32_t writeAddress = 0;                  // offset of the next block in the image
  uint32_t sentTotal = 0;                     // bytes announced in block headers so far

 private:
  [[nodiscard]] ByteView Block(uint32_t index) const;
  [[nodiscard]] bool SendBlock(ByteView block);
};

}  // namespace hollin
