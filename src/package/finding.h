// SPDX-License-Identifier: MIT
// What a package does that its author will not have meant, although the package is accepted. As
// data: words are made by whoever shows it. docs/findings.md lists every code.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace hollin {

enum class FindingCode {
  // Headers and regions.
  kKeyGap,
  kKeyRepeated,
  kTextEmpty,
  kTextBlank,
  kTextNotAscii,
  kTextBehindNul,
  kDataTypeUpperBits,
  kRegionOverlapsHeaders,
  kRegionsOverlap,
  kRegionUnsummed,
  kSecondPackIgnored,
  kPacksSameFlash,
  kUpdateTakesHours,

  // The text of a description.
  kByteOrderMark,
  kLineTooLong,
  kLineNotUtf8,
  kLineHasNul,
  kCommentMark,
  kCommentBehindValue,
  kCommentBehindText,
  kHeaderTail,
  kSectionSpelling,
  kSectionUnknown,
  kLineBeforeSections,
  kKeyUnknown,
  kKeyOfOtherSection,
  kSettingRepeated,
  kSettingWithoutEffect,
  kNumberSuffix1024,
  kNumberNotDigits,
  kNumberWraps,
  kReservedListEmpty,

  // A1
  kA1DataLengthZero,
  kA1DataLengthAbove65536,
  kA1SeveralBlocks,
  kA1StartAddress,
  kA1StartAddressWraps,

  // A2
  kA2SectorsNotAscending,
  kA2PlanOutsideImage,
  kA2NothingToWrite,
  kA2OddByteDropped,
  kA2ReservedBytesDropped,
  kA2ErasedValue,
  kA2EraseTimeShort,
  kA2BlockAnnouncedAsZero,
  kA2LastSectorSize,
  kA2CyclesAbsolute,
  kA2CyclesEmpty,
  kA2CycleKeyBoth,
  kA2CycleOrder,
  kA2LastEraseAddress,

  // C1
  kC1NeverFits,
  kC1GapNotSkipped,

  // A2 and C1, or all.
  kReservedWithoutSector,
  kValueTruncated,
};

struct Finding {
  FindingCode code = FindingCode::kKeyGap;
  std::optional<size_t> pack{};  // 0 or 1; none for the package as a whole
  size_t line = 0, column = 0;   // of the description; 0 where it is no single place
  std::string text{};            // what it is about, as in the file: not escaped, any bytes
  uint64_t number = 0;           // this and the next: the numbers that the words name
  uint64_t other = 0;
  size_t more = 0;  // further findings of this code in this pack, which were left out
};

// Keeps the first few findings of each code and pack and counts the rest: a hostile description may
// have millions.
class FindingList {
 public:
  void Add(Finding finding);
  // Whether a further finding would be kept; where not, it is counted by this question.
  [[nodiscard]] bool HasRoom(FindingCode code, std::optional<size_t> pack);

  [[nodiscard]] const std::vector<Finding>& All() const { return all; }
  [[nodiscard]] bool Empty() const { return all.empty(); }

 private:
  std::vector<Finding> all;
};

}  // namespace hollin
