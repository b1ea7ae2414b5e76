// SPDX-License-Identifier: MIT
#include "package/package_writer.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include "package/package_layout.h"

namespace hollin {
namespace {

using namespace package_layout;

constexpr std::array<std::string_view, 3> kDataTypes = {"A1", "A2", "C1"};

void PutText(std::span<uint8_t> block, size_t offset, std::string_view text) {
  std::copy(text.begin(), text.end(), block.begin() + static_cast<ptrdiff_t>(offset));
}

void PutBlockSum(std::span<uint8_t> block) {
  PutU32(block, kBlockSumOffset, PackageSum(block.first(kBlockSumOffset)));
}

bool IsDataType(const PackContents& pack) {
  return std::find(kDataTypes.begin(), kDataTypes.end(), pack.dataType) != kDataTypes.end();
}

size_t FileSize(const PackageContents& contents) {
  size_t size = kBlockSize * (1 + contents.packs.size());
  for (const PackContents& pack : contents.packs)
    size += pack.description.size() + pack.image.size();
  return size;
}

bool IsTooLarge(const PackageContents& contents) {
  constexpr size_t kLongest = std::numeric_limits<int32_t>::max();
  return FileSize(contents) > std::numeric_limits<uint32_t>::max() ||
         std::any_of(contents.packs.begin(), contents.packs.end(), [](const PackContents& pack) {
           return pack.description.size() > kLongest || pack.image.size() > kLongest;
         });
}

PackRefusal FindRefusal(const PackageContents& contents) {
  if (contents.productModel.size() > kTextSize) return PackRefusal::kModelTooLong;
  if (contents.firmwareVersion.size() > kTextSize) return PackRefusal::kVersionTooLong;
  if (std::any_of(contents.keys.begin(), contents.keys.end(),
                  [](const std::string& key) { return key.size() > kKeySize; })) {
    return PackRefusal::kKeyTooLong;
  }
  if (contents.packs.empty() || contents.packs.size() > 2) return PackRefusal::kPackCount;
  if (!std::all_of(contents.packs.begin(), contents.packs.end(), IsDataType)) {
    return PackRefusal::kDataType;
  }
  return IsTooLarge(contents) ? PackRefusal::kTooLarge : PackRefusal::kNone;
}

void PutFileHeader(std::span<uint8_t> block, const PackageContents& contents) {
  PutText(block, kProductModel, contents.productModel);
  PutText(block, kFirmwareVersion, contents.firmwareVersion);
  for (size_t i = 0; i < kKeys.size(); i++) PutText(block, kKeys[i], contents.keys[i]);
  block[kPackCount] = static_cast<uint8_t>(contents.packs.size());
  PutBlockSum(block);
}

// Copies a region to `next`, describes it in the block, and moves `next` behind it.
void PutRegion(Bytes& file, size_t block, size_t field, ByteView region, size_t& next) {
  std::copy(region.begin(), region.end(), file.begin() + static_cast<ptrdiff_t>(next));
  const std::span<uint8_t> header = std::span(file).subspan(block, kBlockSize);
  PutU32(header, field, static_cast<uint32_t>(next));
  PutU32(header, field + 4, static_cast<uint32_t>(region.size()));
  PutU32(header, field + 8, PackageSum(region));
  next += region.size();
}

}  // namespace

PackRefusal WritePackage(const PackageContents& contents, Bytes& file) {
  file.clear();
  const PackRefusal refusal = FindRefusal(contents);
  if (refusal != PackRefusal::kNone) return refusal;
  file.resize(FileSize(contents));
  PutFileHeader(std::span(file).first(kBlockSize), contents);
  size_t next = kBlockSize * (1 + contents.packs.size());
  for (size_t i = 0; i < contents.packs.size(); i++) {
    const size_t block = kBlockSize * (1 + i);
    PutText(std::span(file).subspan(block, kBlockSize), kDataType, contents.packs[i].dataType);
    PutRegion(file, block, kCnfgAddr, contents.packs[i].description, next);
    PutRegion(file, block, kDataAddr, contents.packs[i].image, next);
    PutBlockSum(std::span(file).subspan(block, kBlockSize));
  }
  return PackRefusal::kNone;
}

}  // namespace hollin
