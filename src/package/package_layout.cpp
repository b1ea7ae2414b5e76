// SPDX-License-Identifier: MIT
#include "package/package_layout.h"

#include <limits>

namespace hollin {
namespace {

using namespace package_layout;

PackageVerdict CheckSum(PackageDefect defect, size_t pack, uint32_t stored, ByteView bytes) {
  const uint32_t computed = PackageSum(bytes);
  if (stored == computed) return {};
  return {.defect = defect, .pack = pack, .stored = stored, .computed = computed};
}

PackageVerdict CheckBlockSum(PackageDefect defect, size_t pack, ByteView block) {
  return CheckSum(defect, pack, ReadU32(block, kBlockSumOffset), block.first(kBlockSumOffset));
}

PackageRegion ReadRegion(ByteView block, size_t offset) {
  return {.address = ReadU32(block, offset),
          .length = ReadU32(block, offset + 4),
          .sum = ReadU32(block, offset + 8)};
}

PackageVerdict CheckPackHeader(ByteView file, size_t pack, PackHeader& header) {
  const size_t start = kBlockSize * (1 + pack);
  if (file.size() < start + kBlockSize) return {.defect = PackageDefect::kCutShort, .pack = pack};
  const ByteView block = file.subspan(start, kBlockSize);
  const PackageVerdict verdict = CheckBlockSum(PackageDefect::kPackHeaderSum, pack, block);
  if (!verdict.IsGood()) return verdict;
  header.dataType = ReadU32(block, kDataType);
  header.config = ReadRegion(block, kCnfgAddr);
  header.data = ReadRegion(block, kDataAddr);
  return {};
}

PackageVerdict CheckRegion(ByteView file, PackageDefect defect, size_t pack,
                           const PackageRegion& region) {
  if (!LiesInside(file, region.address, region.length)) {
    return {.defect = PackageDefect::kRegionOutside,
            .pack = pack,
            .isImage = defect == PackageDefect::kDataSum};
  }
  return CheckSum(defect, pack, region.sum, RegionBytes(file, region.address, region.length));
}

PackageVerdict CheckFileHeader(ByteView file, uint8_t& packCount) {
  if (file.size() < kBlockSize) return {.defect = PackageDefect::kCutShort};
  packCount = file[kPackCount];
  if (packCount != 1 && packCount != 2) return {.defect = PackageDefect::kPackCount};
  return CheckBlockSum(PackageDefect::kFileHeaderSum, 0, file.first(kBlockSize));
}

}  // namespace

uint32_t PackageSum(ByteView bytes) {
  const bool isCounted = bytes.size() <= static_cast<size_t>(std::numeric_limits<int32_t>::max());
  return isCounted ? SumBytes(bytes) : 0;
}

PackageVerdict CheckPackage(ByteView file, PackageHeaders& headers) {
  headers = {};
  PackageVerdict verdict = CheckFileHeader(file, headers.packCount);
  for (size_t i = 0; verdict.IsGood() && i < headers.packCount; i++) {
    verdict = CheckPackHeader(file, i, headers.packs[i]);
  }
  for (size_t i = 0; verdict.IsGood() && i < headers.packCount; i++) {
    verdict = CheckRegion(file, PackageDefect::kConfigSum, i, headers.packs[i].config);
  }
  for (size_t i = 0; verdict.IsGood() && i < headers.packCount; i++) {
    verdict = CheckRegion(file, PackageDefect::kDataSum, i, headers.packs[i].data);
  }
  return verdict;
}

ByteView RegionBytes(ByteView file, uint32_t address, uint32_t length) {
  return file.subspan(address, length);
}

bool LiesInside(ByteView file, uint32_t address, uint32_t length) {
  return uint64_t{address} + length <= file.size();
}

}  // namespace hollin
