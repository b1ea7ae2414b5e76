// SPDX-License-Identifier: MIT
#include "tests/campaign/fault_matrix.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "app/update_loop.h"
#include "base/pause.h"
#include "device/hid_device.h"
#include "tests/campaign/keyboard_link.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/temp_folder.h"

namespace hollin::campaign {
namespace {

using simulator::Fault;
using simulator::FaultKind;
using simulator::FaultMoment;
using simulator::Keyboard;
using std::chrono::milliseconds;

constexpr uint8_t kOld = 0x5A;  // what the chips hold before an update

// One fault may cost a sector its six attempts and every poll that an erase has, no more.
constexpr size_t kReportsFactor = 6;
constexpr size_t kReportsMore = 1000;
constexpr milliseconds kPauseMore{15000};

std::array<simulator::FlashMemory*, 3> Memories(Keyboard& keyboard) {
  return {&keyboard.A1().memory, &keyboard.A2().memory, &keyboard.C1().memory};
}

void Fill(simulator::FlashMemory& memory, ByteView contents) {
  static_cast<void>(memory.Program(0, contents));
  memory.programmed.clear();
}

void FillWithOld(Keyboard& keyboard) {
  for (simulator::FlashMemory* memory : Memories(keyboard)) {
    Fill(*memory, Filled(memory->Size(), kOld));
  }
}

// Whether a keyboard that was filled got a report, or anything of it was erased or programmed.
bool IsTouched(Keyboard& keyboard) {
  const auto memories = Memories(keyboard);
  return keyboard.Record().counters.hostReports > 0 ||
         std::any_of(memories.begin(), memories.end(), [](const simulator::FlashMemory* memory) {
           return !memory->erased.empty() || !memory->programmed.empty();
         });
}

milliseconds Sum(const std::vector<milliseconds>& pauses) {
  return std::accumulate(pauses.begin(), pauses.end(), milliseconds(0));
}

bool IsSameBytes(ByteView a, ByteView b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end());
}

// Whether a range lies in one of the places.
bool IsPlanned(const std::vector<ReferenceWrite>& places, const simulator::Range& range) {
  return std::any_of(places.begin(), places.end(), [&](const ReferenceWrite& place) {
    return range.offset >= place.place &&
           range.offset + range.length <= place.place + place.placeSize;
  });
}

Fault AtHostReport(FaultKind kind, uint64_t index) {
  return {.kind = kind, .moment = FaultMoment::kHostReport, .index = index};
}

Fault AtKeyboardReport(FaultKind kind, uint64_t index, int64_t parameter, uint32_t times = 1) {
  return {.kind = kind,
          .moment = FaultMoment::kKeyboardReport,
          .index = index,
          .parameter = parameter,
          .times = times};
}

// What can happen to a report of the keyboard's.
std::vector<Fault> KeyboardFaults(uint64_t index) {
  std::vector<Fault> faults;
  const auto add = [&](FaultKind kind, std::initializer_list<int64_t> parameters) {
    for (const int64_t parameter : parameters) {
      faults.push_back(AtKeyboardReport(kind, index, parameter));
    }
  };
  faults.push_back(AtKeyboardReport(FaultKind::kMute, index, 0, Fault::kAlways));
  add(FaultKind::kNoReply, {0});
  add(FaultKind::kLate, {0});
  add(FaultKind::kReadFails, {0});
  add(FaultKind::kShortReport, {0, 1, 8, 9, 63});
  add(FaultKind::kWrongOffset, {1, 55, 0xFFFFFFFF});
  add(FaultKind::kWrongTotal, {0, 1, 55, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF});
  add(FaultKind::kFlipByte, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
  add(FaultKind::kDuplicate, {0});
  add(FaultKind::kStale, {0});
  add(FaultKind::kUnsolicited, {64});
  return faults;
}

}  // namespace

std::string TextOf(const RunFault& fault) {
  if (!fault.fault) {
    return fault.secondKeyboardAt == 0
               ? "none"
               : "second-keyboard@h" + std::to_string(fault.secondKeyboardAt);
  }
  const auto known = simulator::FaultDescriptions();
  const auto kind = std::find_if(known.begin(), known.end(), [&](const auto& description) {
    return description.kind == fault.fault->kind;
  });
  const char letter = std::string("hcro")[static_cast<size_t>(fault.fault->moment)];
  return std::string(kind->name) + "=" + std::to_string(fault.fault->parameter) + "@" + letter +
         std::to_string(fault.fault->index);
}

CampaignUpdate::CampaignUpdate(ReferenceUpdate given)
    : update(std::move(given)), places(PlannedPlaces(update)) {
  HidDevice::vendorId = update.keyboard.vendorId;
  HidDevice::productId = update.keyboard.productId;
  Keyboard keyboard(update.keyboard);
  for (size_t i = 0; i < expected.size(); i++) {
    expected[i] = Filled(Memories(keyboard)[i]->Size(), kOld);
    for (const ReferenceWrite& place : places[i]) {
      const auto begin = expected[i].begin() + static_cast<long>(place.place);
      std::fill_n(begin, place.placeSize, 0xFF);
      std::copy_n(place.data.begin(), place.data.size() - (i == 1 ? place.data.size() % 2 : 0),
                  begin);
    }
  }
  if (!Load()) return;
  const RunResult healthy = Run({});
  isReady = healthy.succeeded && healthy.violations.empty();
}

CampaignUpdate::~CampaignUpdate() {
  SetPauseFunction({});
  datFile.DeleteTempFiles();
}

bool CampaignUpdate::Load() {
  const TempFolder folder;
  return datFile.OpenDatFile(folder.Write("package.dat", PackageOf(update))) &&
         datFile.ExamineDatFile();
}

std::vector<RunFault> CampaignUpdate::Faults() const {
  std::vector<RunFault> faults;
  faults.push_back(
      {.fault = Fault{.kind = FaultKind::kOpenFails, .moment = FaultMoment::kOpen, .index = 1}});
  for (uint64_t index = 1; index <= healthyReports; index++) {
    for (const FaultKind kind : {FaultKind::kWriteFails, FaultKind::kRemoveBefore,
                                 FaultKind::kRemoveAt, FaultKind::kRemoveAfter}) {
      faults.push_back({.fault = AtHostReport(kind, index)});
    }
    faults.push_back({.fault = {}, .secondKeyboardAt = index});
  }
  for (uint64_t index = 1; index <= keyboardReports; index++) {
    for (const Fault& fault : KeyboardFaults(index)) faults.push_back({.fault = fault});
  }
  return faults;
}

simulator::KeyboardOptions CampaignUpdate::OptionsFor(const RunFault& fault) const {
  simulator::KeyboardOptions options = update.keyboard;
  if (fault.fault) options.faults.push_back(*fault.fault);
  return options;
}

RunResult CampaignUpdate::Run(const RunFault& fault) {
  hidapi.Reset();
  hidapi.recordCalls = false;
  Keyboard& keyboard = hidapi.Attach(OptionsFor(fault));
  FillWithOld(keyboard);
  HidDevice::report.fill(0);  // as it is in the reference
  const Trace trace = RunProgram(keyboard, fault.secondKeyboardAt);

  RunResult result{.succeeded = trace.succeeded,
                   .hasStruck = HasStruck(trace, keyboard),
                   .reports = trace.reports.size(),
                   .paused = Sum(trace.pauses),
                   .violations = {}};
  if (!isReady && !fault.fault && fault.secondKeyboardAt == 0) {
    healthyReports = trace.reports.size();
    keyboardReports = keyboard.Record().counters.keyboardReports;
    ownFaults = keyboard.FaultsStruck();
    healthyPause = result.paused;
  }
  CheckRun(trace, keyboard, fault, result);
  CheckSecondRun(keyboard, result);
  return result;
}

// A run that came to its end has met the update's own faults too; one that did not was ended by the
// fault.
bool CampaignUpdate::HasStruck(const Trace& trace, const Keyboard& keyboard) const {
  return trace.second != nullptr || keyboard.FaultsStruck() > ownFaults ||
         (isReady && !trace.succeeded && keyboard.FaultsStruck() > 0);
}

CampaignUpdate::Trace CampaignUpdate::RunProgram(Keyboard& keyboard, uint64_t secondKeyboardAt) {
  Trace trace;
  hidapi.onBlock = [&keyboard] { keyboard.Unplug(); };
  hidapi.beforeWrite = [&](ByteView report) {
    trace.reports.emplace_back(report.begin(), report.end());
    if (trace.reports.size() != secondKeyboardAt) return;
    trace.second = &hidapi.Attach(update.keyboard);
    FillWithOld(*trace.second);
  };
  SetPauseFunction([&](milliseconds length) {
    trace.pauses.push_back(length);
    hidapi.PassTime(length);
  });
  const UpdateOutcome outcome =
      RunUpdate(datFile, [&](int32_t value) { trace.progress.push_back(value); });
  trace.succeeded =
      outcome == UpdateOutcome::kSucceeded || outcome == UpdateOutcome::kSucceededUnacknowledged;
  hidapi.onBlock = {};
  hidapi.beforeWrite = {};
  return trace;
}

void CampaignUpdate::CheckRun(const Trace& trace, Keyboard& keyboard, const RunFault& fault,
                              RunResult& result) {
  if (result.reports > kReportsFactor * healthyReports + kReportsMore ||
      result.paused > kReportsFactor * healthyPause + kPauseMore) {
    result.violations.emplace_back("not bounded");
  }
  CheckEnd(trace, result);
  if (trace.succeeded && !HoldsImages(keyboard)) {
    result.violations.emplace_back("a success without the images in the flash");
  }
  CheckLink(result);
  CheckPlaces(keyboard, result);
  if (trace.second != nullptr && IsTouched(*trace.second)) {
    result.violations.emplace_back("the second keyboard was touched");
  }
  CheckAgainstReference(trace, keyboard, fault, result);
}

// Every step that is done once and in order, then one code of the end, and the right one.
void CampaignUpdate::CheckEnd(const Trace& trace, RunResult& result) const {
  std::vector<int32_t> steps(trace.progress.empty() ? 0 : trace.progress.size() - 1);
  std::iota(steps.begin(), steps.end(), 0);
  steps.push_back(trace.succeeded ? kUpdateSucceeded : kUpdateFailed);
  if (trace.progress != steps) result.violations.emplace_back("not one code of the end");
  const bool isWhole = static_cast<int32_t>(steps.size()) == datFile.TotalStepCount() + 1;
  if (isWhole != trace.succeeded) result.violations.emplace_back("another end than its steps tell");
}

void CampaignUpdate::CheckLink(RunResult& result) const {
  if (hidapi.openHandles != 0 || hidapi.opens != hidapi.closes || hidapi.closes != hidapi.exits ||
      HidDevice::IsOpen()) {
    result.violations.emplace_back("the link was not closed as often as it was opened");
  }
  if (hidapi.enumerations != hidapi.freedLists) {
    result.violations.emplace_back("a list of keyboards was not freed");
  }
}

// The keyboard was not changed where it was not planned.
void CampaignUpdate::CheckPlaces(Keyboard& keyboard, RunResult& result) const {
  for (size_t i = 0; i < places.size(); i++) {
    const simulator::FlashMemory& memory = *Memories(keyboard)[i];
    const auto isOutside = [&](const simulator::Range& range) {
      return !IsPlanned(places[i], range);
    };
    bool isChanged = std::any_of(memory.erased.begin(), memory.erased.end(), isOutside) ||
                     std::any_of(memory.programmed.begin(), memory.programmed.end(), isOutside);
    Bytes kept(memory.Contents().begin(), memory.Contents().end());
    for (const ReferenceWrite& place : places[i]) {
      std::fill_n(kept.begin() + static_cast<long>(place.place), place.placeSize, kOld);
    }
    isChanged = isChanged ||
                std::any_of(kept.begin(), kept.end(), [](uint8_t byte) { return byte != kOld; });
    if (isChanged) result.violations.emplace_back("something outside the plan was changed");
  }
}

// The reference has the same keyboard with the same fault; all bytes and all pauses are the same,
// and both keyboards are left alike.
void CampaignUpdate::CheckAgainstReference(const Trace& trace, Keyboard& keyboard,
                                           const RunFault& fault, RunResult& result) const {
  Keyboard other(OptionsFor(fault));
  FillWithOld(other);
  KeyboardLink link(other);
  const bool succeeded = ReferenceHost(link).Update(update.packs);
  if (link.reports != trace.reports) {
    const auto [mine, its] = std::mismatch(trace.reports.begin(), trace.reports.end(),
                                           link.reports.begin(), link.reports.end());
    result.violations.push_back("another wire than the reference's from report " +
                                std::to_string(mine - trace.reports.begin() + 1) + " on");
  }
  if (link.pauses != trace.pauses) result.violations.emplace_back("other pauses");
  if (succeeded != trace.succeeded) result.violations.emplace_back("another end");
  for (size_t i = 0; i < expected.size(); i++) {
    if (!IsSameBytes(Memories(other)[i]->Contents(), Memories(keyboard)[i]->Contents())) {
      result.violations.emplace_back("another flash than the reference's");
    }
  }
}

// The flash as the first run left it, in a keyboard that is sound again.
void CampaignUpdate::CheckSecondRun(Keyboard& keyboard, RunResult& result) {
  std::array<Bytes, 3> left;
  for (size_t i = 0; i < left.size(); i++) {
    const ByteView contents = Memories(keyboard)[i]->Contents();
    left[i].assign(contents.begin(), contents.end());
  }
  hidapi.Reset();
  hidapi.recordCalls = false;
  Keyboard& sound = hidapi.Attach(update.keyboard);
  for (size_t i = 0; i < left.size(); i++) Fill(*Memories(sound)[i], left[i]);
  const Trace trace = RunProgram(sound, 0);
  if (!trace.succeeded || !HoldsImages(sound)) {
    result.violations.emplace_back("the healthy run behind it failed");
  }
  if (trace.reports.size() != healthyReports) {
    result.violations.emplace_back("the healthy run behind it sent something else");
  }
  CheckLink(result);
}

bool CampaignUpdate::HoldsImages(Keyboard& keyboard) const {
  for (size_t i = 0; i < expected.size(); i++) {
    if (!IsSameBytes(Memories(keyboard)[i]->Contents(), expected[i])) return false;
  }
  return true;
}

}  // namespace hollin::campaign
