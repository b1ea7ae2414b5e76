// SPDX-License-Identifier: MIT
// Opens two packages, both with an image of zeros (the keyboard here tells every sum as 0), and
// updates with them in turn on a keyboard that answers at once, without a pause:
//
//   hollin_update_growth LARGE SMALL
//
// prints a line a round, with three times of the processor in nanoseconds, each for as many updates
// as give 64 MiB: with the large package; with the small one; and with the large one whose image is
// the memory of a small one over and over, so that the caches hold it. Everything has run once
// before, so that nothing is touched for the first time.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

#include "base/descriptor.h"
#include "base/pause.h"
#include "benchmarks/stopwatch.h"
#include "package/dat_file_examine.h"

namespace hollin {
namespace {

constexpr int kRounds = 5;
constexpr size_t kBytes = 64 << 20;  // of images in each time; a multiple of every image's

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

// Stands in for an updater's image: `size` bytes of zeros, a multiple of `period`, which are the
// same `period` bytes of memory again and again. They lie in small pages, which if anything cost
// more than those of the own image, which is put back in the end.
class RepeatedImage {
 public:
  RepeatedImage(AXUpdate& updater, size_t size, size_t period)
      : mUpdater(updater), mOwn(std::move(updater.image)), mSize(size) {
    const Descriptor memory(memfd_create("image", MFD_CLOEXEC));
    Require(memory.IsOpen() && ftruncate(memory.number, static_cast<off_t>(period)) == 0);
    void* const begin = mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    Require(begin != MAP_FAILED);
    mUpdater.image.reset(static_cast<uint8_t*>(begin));
    for (size_t offset = 0; offset < size; offset += period) {
      Require(mmap(mUpdater.image.get() + offset, period, PROT_READ, MAP_SHARED | MAP_FIXED,
                   memory.number, 0) != MAP_FAILED);
    }
  }
  RepeatedImage(const RepeatedImage&) = delete;
  RepeatedImage& operator=(const RepeatedImage&) = delete;
  ~RepeatedImage() {
    munmap(mUpdater.image.release(), mSize);
    mUpdater.image = std::move(mOwn);
  }

 private:
  AXUpdate& mUpdater;
  std::unique_ptr<uint8_t[]> mOwn;
  size_t mSize;
};

template <typename Work>
double NanosecondsOf(size_t count, const Work& work) {
  const double seconds = SecondsOf<ProcessorClock>([&] {
    for (size_t i = 0; i < count; i++) work();
  });
  return seconds * 1e9;
}

void Measure(const char* largePath, const char* smallPath) {
  DatFileExamine large;
  DatFileExamine small;
  DatFileExamine cached;
  Open(large, largePath);
  Open(small, smallPath);
  Open(cached, largePath);
  const auto size = static_cast<size_t>(large.Update1->imageLength);
  const auto period = static_cast<size_t>(small.Update1->imageLength);
  Require(kBytes % size == 0 && size % period == 0);
  const RepeatedImage repeated(*cached.Update1, size, period);
  for (int round = 0; round <= kRounds; round++) {
    const double ofLarge = NanosecondsOf(kBytes / size, [&] { Update(large); });
    const double ofSmall = NanosecondsOf(kBytes / period, [&] { Update(small); });
    const double ofCached = NanosecondsOf(kBytes / size, [&] { Update(cached); });
    if (round > 0) std::printf("%.0f %.0f %.0f\n", ofLarge, ofSmall, ofCached);
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
