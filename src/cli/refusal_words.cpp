// SPDX-License-Identifier: MIT
#include "cli/refusal_words.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "cli/refusal_details.h"

namespace hollin::words {
namespace {

using namespace package_layout;

struct LoadWords {
  LoadRefusal refusal;
  std::string_view code;
  std::string_view message;
};

constexpr std::array kLoadWords = {
    LoadWords{LoadRefusal::kUnreadable, "out-of-memory", "there is not enough memory to read it"},
    LoadWords{LoadRefusal::kImageEmpty, "image-empty", "the image is empty"},
    LoadWords{LoadRefusal::kImageTooLong, "image-too-long",
              "the image does not fit into the flash that the description describes"},
    LoadWords{LoadRefusal::kTooManySteps, "steps-too-many",
              "the update would take more than 2147483647 steps"},
    LoadWords{LoadRefusal::kNoChipSize, "a1-chip-size",
              "the description gives no \"Chip Size\", or 0"},
    LoadWords{LoadRefusal::kDataLength, "a1-data-length", "\"Data Length\" is no multiple of 64"},
    LoadWords{LoadRefusal::kNoFlashModel, "a2-flash-model",
              "the description has no line under [Flash Modle]"},
    LoadWords{LoadRefusal::kBlockSize, "a2-block-size",
              "the number under [Block Size] is not even, or not between 2 and 65536"},
    LoadWords{LoadRefusal::kNoWriteBackTime, "a2-write-back-time", "\"MaxWriteBack\" is 0"},
    LoadWords{LoadRefusal::kNoEraseTime, "a2-erase-time", "\"MaxSectorEraseTime\" is 0"},
    LoadWords{LoadRefusal::kEraseCycles, "a2-erase-cycles",
              "[Sector Erase Cycle] has not as many addresses and data words as \"EraseCycles\" "
              "says (6 where it says nothing)"},
    LoadWords{LoadRefusal::kProgramCycles, "a2-program-cycles",
              "[Program Cycle] has not as many addresses and data words as \"ProgramCycles\" says "
              "(3 where it says nothing)"},
    LoadWords{LoadRefusal::kWriteBufferCycles, "a2-write-buffer-cycles",
              "[Write Buffer Cycle] has not as many addresses and data words as "
              "\"WriteBufferCycles\" says (4 where it says nothing)"},
    LoadWords{LoadRefusal::kProgramBufferCycles, "a2-program-buffer-cycles",
              "[Program Buffer Cycle] has not as many addresses and data words as "
              "\"ProgramBufferCycles\" says (1 where it says nothing)"},
    LoadWords{LoadRefusal::kNoSectors, "a2-sectors", "[Sector Address List] has no entry"},
    LoadWords{LoadRefusal::kOneSector, "a2-one-sector",
              "[Sector Address List] has one entry only, which leaves the size of the sector open"},
    LoadWords{LoadRefusal::kFileOffset, "a2-file-offset", "\"FileOffset\" lies behind the image"},
    LoadWords{LoadRefusal::kLineMode, "c1-line-mode",
              "the number under [Line Mode] is none of 1, 2 and 4"},
    LoadWords{LoadRefusal::kSpiNumber, "c1-spi-number",
              "the number under [SPI Number] is neither 0 nor 1"},
    LoadWords{LoadRefusal::kChipSelect, "c1-chip-select",
              "the number under [Chip Select Number] is neither 0 nor 1"},
    LoadWords{LoadRefusal::kNoSectorSize, "c1-sector-size", "the number under [Sector Size] is 0"},
    LoadWords{LoadRefusal::kNoReservedSector, "no-reserved-sector",
              "[Reserved Sector] has no entry: at least one is required"},
};

struct LineWords {
  DescriptionRemark remark;
  std::string_view code;
  std::string_view message;  // {text} and {line} are the failed line's
};

constexpr std::array kLineWords = {
    LineWords{DescriptionRemark::kUnclosedHeader, "header-not-closed",
              R"("{line}" begins a section header, but has no "]")"},
    LineWords{DescriptionRemark::kOutsideSections, "line-outside-sections",
              "\"{line}\" stands in no section that an A1 description knows"},
    LineWords{DescriptionRemark::kNoEqualsSign, "line-without-equals-sign",
              R"("{line}" has no "=")"},
    LineWords{DescriptionRemark::kBadNumber, "number-invalid", "\"{text}\" is no number"},
};

std::string_view NameOfKind(FileKind kind) {
  switch (kind) {
    case FileKind::kUnknown:
      return "";
    case FileKind::kWebPage:
      return "This is a web page: perhaps the download asked for a login or was not there.";
    case FileKind::kZip:
      return "This is a ZIP archive: extract it, the package may be inside.";
    case FileKind::kGzip:
      return "This is a gzip archive: extract it, the package may be inside.";
    case FileKind::kSevenZip:
      return "This is a 7z archive: extract it, the package may be inside.";
    case FileKind::kRar:
      return "This is a RAR archive: extract it, the package may be inside.";
    case FileKind::kPdf:
      return "This is a PDF document.";
    case FileKind::kProgram:
      return "This is a program.";
    case FileKind::kPicture:
      return "This is a picture.";
    case FileKind::kText:
      return "This is a text file.";
    case FileKind::kZeros:
      return "All bytes of the file are zero: perhaps the download or the copy broke off.";
  }
  return "";
}

std::string Sums(const PackageVerdict& verdict) {
  return fmt::format("the file says 0x{:08X}, the bytes give 0x{:08X}", verdict.stored,
                     verdict.computed);
}

std::string HintOf(const PackageInspection& inspection) {
  if (inspection.kind != FileKind::kUnknown) return std::string(NameOfKind(inspection.kind));
  // Where far more is missing, an address or length is wrong instead.
  constexpr uint64_t kMostMissing = 1 << 30;
  if (inspection.missingBytes == 0 || inspection.missingBytes > kMostMissing) return "";
  const bool isAtLeast = inspection.verdict.defect != PackageDefect::kRegionOutside;
  return fmt::format("The file is cut short by {}{} {}.", isAtLeast ? "at least " : "",
                     inspection.missingBytes, inspection.missingBytes == 1 ? "byte" : "bytes");
}

std::string OutsideMessage(const PackageInspection& inspection) {
  const auto& [defect, pack, isImage, stored, computed] = inspection.verdict;
  const PackHeader& header = inspection.headers.packs[pack];
  const PackageRegion& region = isImage ? header.data : header.config;
  const uint64_t end = uint64_t{region.address} + region.length;
  return fmt::format("the {} of pack {} ({} bytes at {}) ends {} {} behind the end of the file",
                     isImage ? "image" : "description", pack + 1, region.length, region.address,
                     end - inspection.fileLength,
                     end - inspection.fileLength == 1 ? "byte" : "bytes");
}

Refusal OfHeaders(const PackageInspection& inspection) {
  const PackageVerdict& verdict = inspection.verdict;
  const std::string hint = HintOf(inspection);
  const size_t number = verdict.pack + 1;
  switch (verdict.defect) {
    case PackageDefect::kNone:
      break;
    case PackageDefect::kCutShort:
      return {
          "headers-cut-short",
          fmt::format("the file has {} bytes and ends inside its headers", inspection.fileLength),
          hint};
    case PackageDefect::kPackCount:
      return {"pack-count",
              fmt::format("the number of packs (byte 123) is {}, neither 1 nor 2",
                          inspection.headers.packCount),
              inspection.kind == FileKind::kUnknown ? "This is probably no update package." : hint};
    case PackageDefect::kFileHeaderSum:
      return {"file-header-sum", "the sum of the file header (at 124) is wrong: " + Sums(verdict),
              std::string(NameOfKind(inspection.kind))};
    case PackageDefect::kPackHeaderSum:
      return {"pack-header-sum",
              fmt::format("the sum of the header of pack {} (at {}) is wrong: {}", number,
                          kBlockSize * number + kBlockSumOffset, Sums(verdict)),
              ""};
    case PackageDefect::kRegionOutside:
      return {"region-outside", OutsideMessage(inspection), hint};
    case PackageDefect::kConfigSum:
      return {
          "description-sum",
          fmt::format("the sum of the description of pack {} is wrong: {}", number, Sums(verdict)),
          ""};
    case PackageDefect::kDataSum:
      return {"image-sum",
              fmt::format("the sum of the image of pack {} is wrong: {}", number, Sums(verdict)),
              ""};
  }
  return {"unknown", "unknown"};
}

std::string NameOfType(uint32_t dataType) {
  return {static_cast<char>(dataType & 0xFF), static_cast<char>(dataType >> 8 & 0xFF)};
}

Refusal OfLine(const PackageInspection& inspection) {
  const size_t pack = inspection.load.pack;
  const auto& failed = inspection.failedLines[pack];
  if (!failed) return {"unknown", "unknown"};
  const auto* const words =
      std::find_if(kLineWords.begin(), kLineWords.end(),
                   [&](const LineWords& w) { return w.remark == failed->remark; });
  return {words->code,
          fmt::format("line {}, column {} of the description of pack {}: {}", failed->line,
                      failed->column, pack + 1,
                      fmt::format(fmt::runtime(words->message), fmt::arg("text", failed->text),
                                  fmt::arg("line", failed->lineText)))};
}

Refusal OfPack(const PackageInspection& inspection) {
  const LoadVerdict& load = inspection.load;
  const uint32_t dataType = inspection.headers.packs[load.pack].dataType;
  if (load.defect == LoadDefect::kDataType) {
    return {"data-type", fmt::format("the type of pack {}, \"{}\" (0x{:04X}), is none of A1, A2 "
                                     "and C1",
                                     load.pack + 1, NameOfType(dataType), dataType & 0xFFFF)};
  }
  if (load.refusal == LoadRefusal::kDescription) return OfLine(inspection);
  const LoadRefusal refusal =
      load.defect == LoadDefect::kTooManySteps ? LoadRefusal::kTooManySteps : load.refusal;
  const auto* const words =
      std::find_if(kLoadWords.begin(), kLoadWords.end(),
                   [refusal](const LoadWords& w) { return w.refusal == refusal; });
  if (words == kLoadWords.end()) return {"unknown", "unknown"};
  std::string message =
      fmt::format("pack {} ({}): {}", load.pack + 1, NameOfType(dataType), words->message);
  const std::string detail = DetailOf(refusal, *inspection.updaters[load.pack]);
  if (!detail.empty()) message += fmt::format(" ({})", detail);
  return {words->code, message};
}

}  // namespace

Refusal OfInvalid(const PackageInspection& inspection) {
  return inspection.verdict.IsGood() ? OfPack(inspection) : OfHeaders(inspection);
}

std::vector<std::string_view> AllRefusalCodes() {
  std::vector<std::string_view> codes = {"headers-cut-short", "pack-count",     "file-header-sum",
                                         "pack-header-sum",   "region-outside", "description-sum",
                                         "image-sum",         "data-type"};
  for (const LineWords& words : kLineWords) codes.push_back(words.code);
  for (const LoadWords& words : kLoadWords) codes.push_back(words.code);
  return codes;
}

}  // namespace hollin::words
