// SPDX-License-Identifier: MIT
#include "updaters/a1_update.h"

#include <algorithm>
#include <utility>

#include "device/commands.h"

namespace hollin {
namespace {

constexpr uint32_t kDefaultDataLength = 0x10000;
constexpr uint32_t kMessageSize = 64;  // a block travels in messages of this size
constexpr uint32_t kFramingSteps = 2;  // mode before the blocks, verify behind them

}  // namespace

A1Update::A1Update(std::string configPath, std::string imagePath)
    : AXUpdate(std::move(configPath), std::move(imagePath)) {
  mode = flash.mode;
}

bool A1Update::LoadFiles() {
  // Deliberate: a description that cannot be opened is no failure yet; the check of its values
  // decides.
  if (readFile(configPath, description)) {
    const bool isRead = flash.Read(description.Text(), listener);
    mode = flash.mode;
    if (!isRead) return Refuse(LoadRefusal::kDescription);
  }
  writeAddress = 0;
  sentTotal = 0;
  return CheckConfig() && LoadImage() && PlanSteps() && CountSteps();
}

bool A1Update::CheckConfig() {
  if (flash.chipSize == 0) return Refuse(LoadRefusal::kNoChipSize);
  if (flash.dataLength == 0) flash.dataLength = kDefaultDataLength;
  return flash.dataLength % kMessageSize == 0 || Refuse(LoadRefusal::kDataLength);
}

bool A1Update::PlanSteps() {
  if (imageLength == 0) return Refuse(LoadRefusal::kImageEmpty);
  // Deliberate: the start address counts twice, and one beyond half the chip wraps to a large room.
  const uint32_t room = flash.chipSize - 2 * flash.startAddress;
  if (imageLength > room) return Refuse(LoadRefusal::kImageTooLong);
  if (imageLength < flash.dataLength) flash.dataLength = static_cast<uint32_t>(imageLength);
  return true;
}

bool A1Update::CountSteps() {
  const auto length = static_cast<uint64_t>(imageLength);
  return SetStepCount((length + flash.dataLength - 1) / flash.dataLength + kFramingSteps);
}

bool A1Update::RunStep(uint32_t index) {
  if (stepCount < kFramingSteps || index >= stepCount - kFramingSteps) {
    return Fail(UpdateFailure::kBeyondPlan);
  }
  if (index == 0) {
    writeAddress = 0;
    sentTotal = 0;
  }
  const ByteView block = Block(index);
  if (block.empty()) return Fail(UpdateFailure::kBeyondPlan);
  blockLength = static_cast<uint32_t>(block.size());
  checksum = static_cast<uint16_t>(ByteSum(block.data(), static_cast<int32_t>(blockLength)));
  const Bytes header = BlockHeader(writeAddress, blockLength, checksum);
  sentTotal += blockLength;
  if (!Exchange(header, header) || !SendBlock(block)) return false;
  if (!AwaitStatus(kBlockReceived) || !AwaitStatus(kBlockWritten)) return false;
  writeAddress += blockLength;
  return true;
}

// Deliberate: blocks were addressed from 0, but the range to verify begins at the start address.
bool A1Update::VerifyImage() {
  checksum = static_cast<uint16_t>(ByteSum(image.get(), static_cast<int32_t>(imageLength)));
  return VerifyRange(flash.startAddress, sentTotal, checksum);
}

// Block `index` of the image: dataLength bytes, or what is left for the last one. Empty beyond the
// image.
ByteView A1Update::Block(uint32_t index) const {
  const uint64_t start = uint64_t{flash.dataLength} * index;
  const auto length = static_cast<uint64_t>(imageLength);
  if (start >= length) return {};
  return ImageView().subspan(start, std::min<uint64_t>(flash.dataLength, length - start));
}

bool A1Update::SendBlock(ByteView block) {
  for (size_t offset = 0; offset < block.size(); offset += kMessageSize) {
    const size_t size = std::min<size_t>(kMessageSize, block.size() - offset);
    if (!Send(block.subspan(offset, size))) return false;
  }
  return true;
}

}  // namespace hollin
