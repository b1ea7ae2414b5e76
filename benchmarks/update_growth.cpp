// SPDX-License-Identifier: MIT
// Opens two packages, both with an image of zeros (the keyboard here tells every sum as 0), and
// updates with them in turn on a keyboard that answers at once, without a pause:
//
//   hollin_update_growth LARGE SMALL
//
// prints a line a round, with four times of the processor in nanoseconds: an update with the large
// package; as many with the small one as give as many bytes; and for both images, as often, what no
// update can do without: each block is summed and copied into reports, and the image summed in the
// end. Everything has run once before, so that nothing is touched for the first time.
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "base/pause.h"
#include "benchmarks/stopwatch.h"
#include "package/dat_file_examine.h"

namespace hollin {
namespace {

constexpr int kRounds = 5;

void Require(bool succeeded) {
  if (!succeeded) std::abort();
}

void Open(DatFileExamine& datFile, const char* path) {
  Require(datFile.OpenDatFile(path) && datFile.ExamineDatFile());
  datFile.DeleteTempFiles();
}

void Update(DatFileExamine& datFile) {
  for (int32_t step = 0; step < datFile.TotalStepCount(); step++) {
    Require(datFile.RunUpdateStep(static_cast<uint32_t>(step)));
  }
  Require(datFile.EndUpdate(true));
}

void CopyIntoReports(ByteView block) {
  constexpr size_t kPayload = 55;
  std::array<uint8_t, 64> report{};
  for (size_t offset = 0; offset + kPayload <= block.size(); offset += kPayload) {
    std::memcpy(report.data() + 9, block.data() + offset, kPayload);
    benchmark::DoNotOptimize(report.data());
    benchmark::ClobberMemory();
  }
}

void PassBarely(const DatFileExamine& datFile) {
  constexpr size_t kBlock = 8192;
  const AXUpdate& updater = *datFile.Update1;
  const ByteView image(updater.image.get(), static_cast<size_t>(updater.imageLength));
  for (size_t offset = 0; offset < image.size(); offset += kBlock) {
    const ByteView block = image.subspan(offset, std::min(kBlock, image.size() - offset));
    benchmark::DoNotOptimize(SumBytes(block));
    CopyIntoReports(block);
  }
  benchmark::DoNotOptimize(SumBytes(image));
}

template <typename Work>
double NanosecondsOf(int64_t count, const Work& work) {
  const double seconds = SecondsOf<ProcessorClock>([&] {
    for (int64_t i = 0; i < count; i++) work();
  });
  return seconds * 1e9;
}

void Measure(const char* largePath, const char* smallPath) {
  DatFileExamine large;
  DatFileExamine small;
  Open(large, largePath);
  Open(small, smallPath);
  const int64_t count = large.Update1->imageLength / small.Update1->imageLength;
  for (int round = 0; round <= kRounds; round++) {
    const double ofLarge = NanosecondsOf(1, [&] { Update(large); });
    const double ofSmall = NanosecondsOf(count, [&] { Update(small); });
    const double bareLarge = NanosecondsOf(1, [&] { PassBarely(large); });
    const double bareSmall = NanosecondsOf(count, [&] { PassBarely(small); });
    if (round > 0) std::printf("%.0f %.0f %.0f %.0f\n", ofLarge, ofSmall, bareLarge, bareSmall);
  }
}

}  // namespace
}  // namespace hollin

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  hollin::SetPauseFunction([](std::chrono::milliseconds /*length*/) {});
  hollin::Measure(argv[1], argv[2]);
  return 0;
}
