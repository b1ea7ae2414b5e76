// SPDX-License-Identifier: MIT
#include "package/updater_loader.h"

#include <algorithm>
#include <limits>

#include "updaters/a1_update.h"
#include "updaters/a2_update.h"
#include "updaters/c1_update.h"

namespace hollin {
namespace {

using namespace package_layout;

template <typename Updater>
std::unique_ptr<AXUpdate> Make(const PackSetup& pack) {
  auto updater = std::make_unique<Updater>(pack.cnfgPath, pack.dataPath);
  updater->listener = pack.listener;
  return updater;
}

std::unique_ptr<AXUpdate> MakeUpdater(uint32_t dataType, const PackSetup& pack) {
  switch (static_cast<uint16_t>(dataType)) {
    case kTypeA1:
      return Make<A1Update>(pack);
    case kTypeA2:
      return Make<A2Update>(pack);
    case kTypeC1:
      return Make<C1Update>(pack);
    default:
      return nullptr;
  }
}

bool IsSame(ByteView a, ByteView b) { return std::equal(a.begin(), a.end(), b.begin(), b.end()); }

// Deliberate: compared although all sums were right. The temporary files went through a folder that
// others write to and through a disk that may be full: what counts is what the updater holds, and
// that must be what was checked.
bool HoldsPack(const AXUpdate& updater, ByteView file, const PackHeader& header) {
  const ByteView image{updater.image.get(), static_cast<size_t>(updater.imageLength)};
  const auto& [address, length, sum] = header.data;
  return IsSame(updater.description.View(),
                RegionBytes(file, header.config.address, header.config.length)) &&
         IsSame(image, RegionBytes(file, address, length));
}

// A temporary file that has become larger than both regions is none of them, and is not read.
FileReader ReaderOf(const PackHeader& header) {
  return [most = std::max(header.config.length, header.data.length)](const std::string& path,
                                                                     FileContents& contents) {
    return ReadWholeFile(path, contents, most);
  };
}

LoadVerdict LoadPack(ByteView file, const PackageHeaders& headers, size_t pack,
                     const LoadSetup& setup, std::unique_ptr<AXUpdate>& updater) {
  const PackHeader& header = headers.packs[pack];
  updater = MakeUpdater(header.dataType, setup.packs[pack]);
  if (!updater) return {.defect = LoadDefect::kDataType, .pack = pack};
  updater->observer = setup.observer;
  updater->readFile = setup.readFile ? setup.readFile : ReaderOf(header);
  if (!updater->LoadFiles()) {
    return {.defect = LoadDefect::kRefused, .pack = pack, .refusal = updater->refusal};
  }
  if (!HoldsPack(*updater, file, header)) return {.defect = LoadDefect::kExchanged, .pack = pack};
  return {};
}

}  // namespace

LoadVerdict LoadUpdaters(ByteView file, const PackageHeaders& headers, const LoadSetup& setup,
                         Updaters& updaters) {
  uint64_t steps = 0;
  for (size_t i = 0; i < headers.packCount; i++) {
    const LoadVerdict verdict = LoadPack(file, headers, i, setup, updaters[i]);
    if (!verdict.IsGood()) return verdict;
    steps += updaters[i]->StepCount();
  }
  // Deliberate: more steps than an int counts are no steps to whoever counts them, which would be a
  // success with nothing written.
  if (steps > static_cast<uint64_t>(std::numeric_limits<int32_t>::max())) {
    return {.defect = LoadDefect::kTooManySteps};
  }
  return {};
}

}  // namespace hollin
