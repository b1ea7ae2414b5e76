// SPDX-License-Identifier: MIT
// Flashes of many sectors and many reserved ones, against a flash of 16 sectors that does as many
// steps. The goal: a step costs no more. Whole updates are compared (plan, step by step, verify, on
// a keyboard that answers at once), and what they do without the keyboard: the plan and the
// look-ups. Sorting the reserved entries, once a plan, is the one thing that is not linear.
#include <algorithm>
#include <cstdlib>
#include <memory>

#include "base/pause.h"
#include "benchmarks/stopwatch.h"
#include "updaters/a2_update.h"
#include "updaters/c1_update.h"

namespace hollin {
namespace {

constexpr uint32_t kFewSectors = 16;
constexpr uint32_t kSectorBytes = 16;

void Require(bool succeeded) {
  if (!succeeded) std::abort();
}

// Addresses that reserve every other sector from the second on, the last first; beyond the sectors
// they reserve nothing.
std::vector<uint32_t> ReservedEntries(uint32_t count, uint32_t unit) {
  std::vector<uint32_t> entries;
  for (uint32_t i = count; i > 0; i--) entries.push_back((2 * i - 1) * unit);
  return entries;
}

void GiveImage(AXUpdate& update, uint32_t sectors) {
  update.imageLength = int64_t{sectors} * kSectorBytes;
  update.image = std::make_unique<uint8_t[]>(static_cast<size_t>(update.imageLength));
}

std::unique_ptr<A2Update> MakeA2(uint32_t sectors, uint32_t reserved) {
  auto update = std::make_unique<A2Update>("", "");
  for (uint32_t i = 0; i < sectors; i++) update->flash.sectorAddrs.push_back(i * kSectorBytes / 2);
  update->flash.reservedSectors = ReservedEntries(reserved, kSectorBytes / 2);
  // Beside the sectors' addresses: all are written, and every look-up is one for nothing.
  for (uint32_t& entry : update->flash.reservedSectors) entry++;
  update->flash.eraseCycleCount = 0;
  GiveImage(*update, sectors);
  return update;
}

std::unique_ptr<C1Update> MakeC1(uint32_t sectors, uint32_t reserved) {
  auto update = std::make_unique<C1Update>("", "");
  update->flash.sectorSize = kSectorBytes;
  update->flash.reservedSectors = ReservedEntries(reserved, kSectorBytes);
  GiveImage(*update, sectors);
  return update;
}

void RunWhole(AXUpdate& update) {
  Require(update.PlanSteps() && update.EnterUpdateMode(5));
  for (uint32_t i = 0; i + 2 < update.StepCount(); i++) Require(update.RunStep(i));
  Require(update.VerifyImage());
}

// With every sector reserved nothing is sent: the plan and two look-ups a sector remain.
void RunLookUps(A2Update& update) {
  Require(update.PlanSteps());
  for (uint32_t i = 0; i < update.plannedSectors; i++) Require(update.RunStep(i));
  Require(update.VerifyImage());
}

// The three walks over the sectors: span, steps, verify.
void RunLookUps(C1Update& update) {
  Require(update.PlanSteps());
  int32_t span = 0;
  Require(update.FindSpan(update.dataLength, span));
  uint32_t sector = 0;
  for (int walk = 0; walk < 2; walk++) {
    for (uint32_t i = 0; i < update.dataSectorCount; i++) {
      Require(update.FindUnreservedSector(i, sector));
    }
  }
  benchmark::DoNotOptimize(sector);
}

template <typename Many, typename Few>
void Compare(benchmark::State& state, const Many& many, const Few& few) {
  const auto sectors = static_cast<uint32_t>(state.range(0));
  SetPauseFunction([](std::chrono::milliseconds /*length*/) {});
  const Comparison best = CompareInTurns<ProcessorClock>(state, many, [&] {
    for (uint32_t done = 0; done < sectors; done += kFewSectors) few();
  });
  SetPauseFunction({});
  state.counters["ns_per_step"] = best.work * 1e9 / sectors;
  state.counters["ns_per_step_of_16"] = best.bare * 1e9 / sectors;
  state.counters["per_step_over_16"] = best.work / best.bare;
}

template <auto Make>
void WholeUpdate(benchmark::State& state) {
  const auto many =
      Make(static_cast<uint32_t>(state.range(0)), static_cast<uint32_t>(state.range(1)));
  const auto few = Make(kFewSectors, 1);
  Compare(
      state, [&] { RunWhole(*many); }, [&] { RunWhole(*few); });
}

void A2LookUps(benchmark::State& state) {
  const auto allReserved = [](uint32_t sectors) {
    auto update = MakeA2(sectors, 0);
    update->flash.reservedSectors = update->flash.sectorAddrs;
    return update;
  };
  const auto many = allReserved(static_cast<uint32_t>(state.range(0)));
  const auto few = allReserved(kFewSectors);
  Compare(
      state, [&] { RunLookUps(*many); }, [&] { RunLookUps(*few); });
}

void C1LookUps(benchmark::State& state) {
  const auto many =
      MakeC1(static_cast<uint32_t>(state.range(0)), static_cast<uint32_t>(state.range(1)));
  const auto few = MakeC1(kFewSectors, 1);
  Compare(
      state, [&] { RunLookUps(*many); }, [&] { RunLookUps(*few); });
}

void Sizes(benchmark::internal::Benchmark* each) {
  each->ArgNames({"sectors", "reserved"})
      ->Args({kFewSectors, 1})
      ->Args({4096, 1})
      ->Args({65536, 1})
      ->Args({65536, 10000})
      ->UseManualTime()
      ->Unit(benchmark::kMillisecond);
}

BENCHMARK(WholeUpdate<MakeA2>)->Apply(Sizes);
BENCHMARK(WholeUpdate<MakeC1>)->Apply(Sizes);
BENCHMARK(C1LookUps)->Apply(Sizes);
BENCHMARK(A2LookUps)
    ->ArgName("sectors")
    ->Arg(kFewSectors)
    ->Arg(4096)
    ->Arg(65536)
    ->Arg(131072)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace hollin
