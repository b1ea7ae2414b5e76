// SPDX-License-Identifier: MIT
// Listens while a description is read and collects what its author will not have meant, and the
// line at which the reading ended.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "package/finding.h"
#include "updaters/description_file.h"

namespace hollin {

// A line that fails a description.
struct FailedLine {
  DescriptionRemark remark = DescriptionRemark::kBadNumber;
  size_t line = 0, column = 0;
  std::string text;  // the value or section, not escaped
  std::string lineText;
};

class DescriptionFindings {
 public:
  // `dataType` is that of the pack, `findings` must outlive the object.
  DescriptionFindings(uint32_t dataType, size_t pack, FindingList& findings);

  void Take(const DescriptionNote& note);
  // When the reading is over.
  void Finish();

  [[nodiscard]] const std::optional<FailedLine>& Failed() const { return failed; }

 private:
  struct LastCycle {
    uint64_t digits = 0;
    bool isKnown = false;
  };

  void Add(FindingCode code, const DescriptionNote& note, std::string_view text,
           uint64_t number = 0, uint64_t other = 0);
  void TakeOnce(FindingCode code, const DescriptionNote& note);
  void TakeHeader(const DescriptionNote& note);
  void TakeUnknownSection(const DescriptionNote& note);
  void TakeSetting(const DescriptionNote& note);
  void TakeNumber(const DescriptionNote& note);
  void TakeCycle(const DescriptionNote& note);
  void LookAtKey(const DescriptionNote& note);
  void LookAtEffect(const DescriptionNote& note, uint32_t value);
  [[nodiscard]] bool HasForeignMark(std::string_view line) const;
  [[nodiscard]] bool BeginsComment(std::string_view text) const;

  uint16_t type;
  size_t pack;
  FindingList& findings;
  std::optional<FailedLine> failed;
  std::map<const void*, size_t> settingLines;
  std::map<const void*, LastCycle> lastCycles;
  std::string section;  // the current one
  size_t longLine = 0;  // the last that was told
  size_t reservedEntries = 0;
  bool isSectionTold = false;  // that the current one is unknown
  bool isInReserved = false;
};

}  // namespace hollin
