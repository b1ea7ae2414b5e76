// SPDX-License-Identifier: MIT
// Opens a package whose image is all zeros (the keyboard here tells every sum as 0) and runs its
// whole update on a keyboard that answers at once, without a pause:
//
//   hollin_update_steps PACKAGE
//
// prints what that took of the processor, in nanoseconds: everything; the median of the first
// hundred steps that write a sector; the same of the last hundred (of all, where there are fewer).
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "base/pause.h"
#include "benchmarks/stopwatch.h"
#include "package/dat_file_examine.h"

namespace hollin {
namespace {

void Require(bool succeeded) {
  if (!succeeded) std::abort();
}

double Median(std::vector<double> times) {
  const auto middle = times.begin() + static_cast<ptrdiff_t>(times.size() / 2);
  std::nth_element(times.begin(), middle, times.end());
  return *middle;
}

std::vector<double> TimesOfSteps(DatFileExamine& datFile) {
  std::vector<double> times;
  times.reserve(static_cast<size_t>(datFile.TotalStepCount()));
  for (int32_t step = 0; step < datFile.TotalStepCount(); step++) {
    times.push_back(SecondsOf<ProcessorClock>(
        [&] { Require(datFile.RunUpdateStep(static_cast<uint32_t>(step))); }));
  }
  return times;
}

void Measure(const char* path) {
  DatFileExamine datFile;
  std::vector<double> times;
  const double all = SecondsOf<ProcessorClock>([&] {
    Require(datFile.OpenDatFile(path) && datFile.ExamineDatFile());
    times = TimesOfSteps(datFile);
    Require(datFile.EndUpdate(true));
  });
  datFile.DeleteTempFiles();
  const auto first = times.begin() + 1;  // mode and verify are no such steps
  const auto last = times.end() - 1;
  const auto count = std::min<ptrdiff_t>(100, last - first);
  std::printf("%.0f %.0f %.0f\n", all * 1e9, Median({first, first + count}) * 1e9,
              Median({last - count, last}) * 1e9);
}

}  // namespace
}  // namespace hollin

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  hollin::SetPauseFunction([](std::chrono::milliseconds /*length*/) {});
  hollin::Measure(argv[1]);
  return 0;
}
