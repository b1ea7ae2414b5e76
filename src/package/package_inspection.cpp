// SPDX-License-Identifier: MIT
#include "package/package_inspection.h"

#include <algorithm>
#include <new>
#include <string_view>

#include "base/text.h"
#include "package/flash_findings.h"
#include "package/package_findings.h"

namespace hollin {
namespace {

using namespace package_layout;

constexpr uint64_t kMinute = 60000;  // milliseconds
constexpr uint64_t kHour = 60 * kMinute;

std::string TextAt(ByteView file, size_t offset, size_t size) {
  return TextOfField({reinterpret_cast<const char*>(file.data()) + offset, size});
}

void ReadTexts(ByteView file, PackageInspection& inspection) {
  if (file.size() < kBlockSize) return;
  inspection.productModel = TextAt(file, kProductModel, kTextSize);
  inspection.firmwareVersion = TextAt(file, kFirmwareVersion, kTextSize);
  for (size_t i = 0; i < kKeys.size(); i++) {
    inspection.keys[i] = TextAt(file, kKeys[i], kKeySize);
  }
}

// How far the regions and blocks that the headers name reach behind the end of the file.
uint64_t MissingBytes(ByteView file, const PackageHeaders& headers) {
  const size_t blocks = headers.packCount == 2 ? 3 : 2;
  uint64_t end = kBlockSize * blocks;
  for (const PackHeader& pack : headers.packs) {
    end = std::max(end, uint64_t{pack.config.address} + pack.config.length);
    end = std::max(end, uint64_t{pack.data.address} + pack.data.length);
  }
  return end > file.size() ? end - file.size() : 0;
}

bool Copy(ByteView bytes, FileContents& contents) {
  contents.bytes.reset(new (std::nothrow) uint8_t[bytes.size()]);
  if (!contents.bytes) return false;
  contents.size = bytes.size();
  std::copy(bytes.begin(), bytes.end(), contents.bytes.get());
  return true;
}

// Serves the regions of a package under the names that the setup gives them.
FileReader ReadRegions(ByteView file, const PackageHeaders& headers, const LoadSetup& setup) {
  return [file, &headers, &setup](const std::string& path, FileContents& contents) {
    for (size_t i = 0; i < headers.packCount; i++) {
      const auto& [config, data] = std::pair(headers.packs[i].config, headers.packs[i].data);
      if (path == setup.packs[i].cnfgPath) {
        return Copy(RegionBytes(file, config.address, config.length), contents);
      }
      if (path == setup.packs[i].dataPath) {
        return Copy(RegionBytes(file, data.address, data.length), contents);
      }
    }
    return false;
  };
}

void LoadPacks(ByteView file, PackageInspection& inspection) {
  std::array<DescriptionFindings, 2> notes = {
      DescriptionFindings(inspection.headers.packs[0].dataType, 0, inspection.findings),
      DescriptionFindings(inspection.headers.packs[1].dataType, 1, inspection.findings)};
  LoadSetup setup;
  for (size_t i = 0; i < setup.packs.size(); i++) {
    setup.packs[i] = {
        .cnfgPath = "description " + std::to_string(i),
        .dataPath = "image " + std::to_string(i),
        .listener = [&notes, i](const DescriptionNote& note) { notes[i].Take(note); }};
  }
  setup.readFile = ReadRegions(file, inspection.headers, setup);
  inspection.load = LoadUpdaters(file, inspection.headers, setup, inspection.updaters);
  for (size_t i = 0; i < notes.size(); i++) {
    const AXUpdate* const updater = inspection.updaters[i].get();
    if (updater == nullptr) continue;
    notes[i].Finish();
    inspection.failedLines[i] = notes[i].Failed();
    if (updater->StepCount() == 0) continue;
    FindInFlash(*inspection.updaters[i], i, inspection.findings);
  }
}

void Sum(PackageInspection& inspection) {
  for (const auto& updater : inspection.updaters) {
    if (!updater) continue;
    inspection.totalSteps += updater->StepCount();
    inspection.effort += EffortOf(*updater);
  }
  inspection.effort += EffortOfEnd();
  if (inspection.effort.Milliseconds() <= kHour) return;
  inspection.findings.Add({.code = FindingCode::kUpdateTakesHours,
                           .number = inspection.effort.Milliseconds() / kMinute,
                           .other = inspection.totalSteps});
}

}  // namespace

size_t PackageInspection::KnownPacks() const {
  switch (verdict.defect) {
    case PackageDefect::kPackCount:
    case PackageDefect::kFileHeaderSum:
      return 0;
    case PackageDefect::kCutShort:
    case PackageDefect::kPackHeaderSum:
      return verdict.pack;
    default:
      return headers.packCount;
  }
}

PackageInspection InspectPackage(ByteView file) {
  PackageInspection inspection;
  inspection.fileLength = file.size();
  inspection.verdict = CheckPackage(file, inspection.headers);
  ReadTexts(file, inspection);
  if (!inspection.verdict.IsGood()) {
    inspection.kind = GuessFileKind(file);
    inspection.missingBytes = MissingBytes(file, inspection.headers);
    return inspection;
  }
  FindInHeaders(file, inspection.headers, inspection.findings);
  LoadPacks(file, inspection);
  inspection.isValid = inspection.load.IsGood();
  if (!inspection.isValid) return inspection;
  FindInPacks(inspection.updaters, inspection.findings);
  Sum(inspection);
  return inspection;
}

}  // namespace hollin
