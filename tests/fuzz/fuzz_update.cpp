// SPDX-License-Identifier: MIT
// Updates from keyboards that answer what they like. The three updaters are held against the
// reference byte for byte; whole packages against what must hold of any update.
#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <type_traits>

#include "app/update_loop.h"
#include "base/pause.h"
#include "device/hid_device.h"
#include "package/dat_file_examine.h"
#include "tests/campaign/reference_updates.h"
#include "tests/fuzz/erase_plan.h"
#include "tests/fuzz/fuzz_hidapi.h"
#include "tests/fuzz/fuzz_targets.h"
#include "tests/fuzz/hostile_keyboard.h"
#include "tests/fuzz/memory_file.h"
#include "tests/fuzz/mended_package.h"
#include "updaters/a1_update.h"
#include "updaters/a2_update.h"
#include "updaters/c1_update.h"

namespace hollin::fuzz {
namespace {

using std::chrono::milliseconds;

// The input's keyboard behind hidapi, as long as this lives.
class Plugged {
 public:
  Plugged(const simulator::KeyboardOptions& options, ByteView input) : keyboard(options, input) {
    PlugIn(&device);
    HidDevice::vendorId = HidDevice::productId = 1;
    HidDevice::report.fill(0);
    SetPauseFunction([this](milliseconds length) {
      pauses.push_back(length);
      keyboard.PassTime(length);
    });
  }
  ~Plugged() {
    SetPauseFunction({});
    PlugIn(nullptr);
  }
  Plugged(const Plugged&) = delete;
  Plugged& operator=(const Plugged&) = delete;

  HostileKeyboard keyboard;
  std::vector<Bytes> reports;
  std::vector<milliseconds> pauses;

 private:
  OneDevice device{.write =
                       [this](ByteView report) {
                         reports.emplace_back(report.begin(), report.end());
                         return keyboard.Write(report);
                       },
                   .read = [this](std::span<uint8_t> report) { return keyboard.Read(report); }};
};

class HostileLink : public campaign::ReferenceLink {
 public:
  HostileLink(const simulator::KeyboardOptions& options, ByteView input)
      : keyboard(options, input) {}
  bool Open() override { return true; }
  void Close() override {}
  bool Write(ByteView report) override {
    reports.emplace_back(report.begin(), report.end());
    return keyboard.Write(report);
  }
  int Read(std::span<uint8_t> report) override { return keyboard.Read(report); }
  void Pause(milliseconds length) override {
    pauses.push_back(length);
    keyboard.PassTime(length);
  }

  HostileKeyboard keyboard;
  std::vector<Bytes> reports;
  std::vector<milliseconds> pauses;
};

bool Update(AXUpdate& updater) {
  constexpr milliseconds kAfterStep{500};
  bool succeeded = updater.EnterUpdateMode(5);
  if (succeeded) Pause(kAfterStep);
  for (uint32_t step = 0; succeeded && step + 2 < updater.StepCount(); step++) {
    succeeded = updater.RunStep(step);
    if (succeeded) Pause(kAfterStep);
  }
  succeeded = succeeded && updater.VerifyImage();
  if (succeeded) Pause(kAfterStep);
  static_cast<void>(updater.FinishUpdate(succeeded));
  return succeeded;
}

// A small update of one kind, loaded once.
template <typename Updater>
class Subject {
 public:
  Subject(campaign::ReferencePack given, simulator::KeyboardOptions keyboard)
      : pack(std::move(given)), options(std::move(keyboard)) {
    const std::string text = campaign::DescriptionOf(pack);
    const MemoryFile description({reinterpret_cast<const uint8_t*>(text.data()), text.size()});
    const MemoryFile image(campaign::ImageOf(pack));
    updater = std::make_unique<Updater>(description.Path(), image.Path());
    Require(updater->LoadFiles(), "the subject loads");
  }

  void Compare(ByteView input) {
    Plugged plugged(options, input);
    const bool succeeded = Update(*updater);
    Require(!HidDevice::IsOpen() && OpenHandles() == 0, "the link is closed");
    HostileLink link(options, input);
    Require(campaign::ReferenceHost(link).Update({pack}) == succeeded, "both end alike");
    Require(plugged.reports == link.reports, "both write the same reports");
    Require(plugged.pauses == link.pauses, "both pause alike");
  }

 private:
  campaign::ReferencePack pack;
  simulator::KeyboardOptions options;
  std::unique_ptr<Updater> updater;
};

// The reference update without its own faults, and with no more of its image than `size`.
template <typename Updater, typename Pack>
Subject<Updater> Small(size_t which, size_t size) {
  campaign::ReferenceUpdate update = campaign::ReferenceUpdates()[which];
  auto pack = std::get<Pack>(update.packs[0]);
  pack.image.resize(std::min(pack.image.size(), size));
  if constexpr (std::is_same_v<Pack, campaign::ReferenceA1>) pack.blockLength = 128;
  update.keyboard.faults.clear();
  return Subject<Updater>(pack, update.keyboard);
}

// A small update whose programming command of 300 cycles takes 22 reports.
Subject<A2Update> ManyCycles() {
  campaign::ReferenceUpdate update = campaign::ReferenceUpdates()[2];
  auto pack = std::get<campaign::ReferenceA2>(update.packs[0]);
  pack.image.resize(100);
  for (uint16_t i = 0; i < 285; i++) {
    pack.program.push_back({i, uint32_t{i} * 3});
    update.keyboard.a2.program.push_back({i, static_cast<uint16_t>(i * 3)});
  }
  return Subject<A2Update>(pack, update.keyboard);
}

// An update of an examined package, with the messages of each of its steps.
std::vector<Messages> RunWatched(DatFileExamine& datFile, const Plugged& plugged) {
  std::vector<size_t> reportsBefore;  // the step
  int ends = 0;
  reportsBefore.push_back(0);
  static_cast<void>(RunUpdate(datFile, [&](int32_t value) {
    Require(ends == 0, "nothing follows the end");
    if (value < 0) {
      ends++;
    } else {
      Require(value + 1 == static_cast<int32_t>(reportsBefore.size()), "steps are told one by one");
      reportsBefore.push_back(plugged.reports.size());
    }
  }));
  Require(ends == 1, "one code of the end");
  std::vector<Messages> steps;
  const auto at = [&](size_t index) {
    return plugged.reports.begin() + static_cast<long>(reportsBefore[index]);
  };
  for (size_t step = 0; step + 1 < reportsBefore.size(); step++) {
    steps.push_back(MessagesOf({at(step), at(step + 1)}));
  }
  steps.push_back(MessagesOf({at(steps.size()), plugged.reports.end()}));
  Require(!steps.back().empty() && steps.back().back()[0] == 0x09, "the end is told last");
  steps.back().pop_back();
  return steps;
}

void RequirePlannedErasesOf(const AXUpdate& updater, const std::vector<Messages>& steps) {
  const auto length = static_cast<size_t>(updater.imageLength);
  if (const auto* a2 = dynamic_cast<const A2Update*>(&updater)) {
    RequirePlannedErases(ErasePlanOf(a2->flash, length), steps);
  } else if (const auto* c1 = dynamic_cast<const C1Update*>(&updater)) {
    RequirePlannedErases(ErasePlanOf(c1->flash, length), steps);
  }
}

// Of one loaded updater, on an open link. 2^30 and 2^31 blocks are beyond 32 bits of bytes.
void RequireStepsEnd(AXUpdate& updater, const Plugged& plugged) {
  Require(HidDevice::Open(), "the link opens");
  const size_t before = plugged.reports.size();
  for (const uint32_t index : {updater.StepCount() - 2, 0x40000000U, 0x80000000U, 0xFFFFFFFFU}) {
    if (index < updater.StepCount() - 2) continue;
    Require(!updater.RunStep(index), "a step beyond the plan fails");
  }
  Require(plugged.reports.size() == before, "with nothing sent");
  HidDevice::Close();
}

}  // namespace

void A1Replies(ByteView input) {
  static auto subject = Small<A1Update, campaign::ReferenceA1>(1, 300);
  subject.Compare(input);
}

// The first byte chooses the way of writing.
void A2Replies(ByteView input) {
  static auto word = Small<A2Update, campaign::ReferenceA2>(4, 2 * 0x800 + 40);
  static auto buffer = Small<A2Update, campaign::ReferenceA2>(3, 0x800 + 140);
  static auto manyCycles = ManyCycles();
  if (input.empty()) return;
  std::array{&word, &buffer, &manyCycles}.at(input[0] % 3)->Compare(input.subspan(1));
}

void C1Replies(ByteView input) {
  static auto small = Small<C1Update, campaign::ReferenceC1>(5, 4096 + 5);
  static auto large = Small<C1Update, campaign::ReferenceC1>(6, 9000);
  if (input.empty()) return;
  (input[0] % 2 == 0 ? small : large).Compare(input.subspan(1));
}

// The first byte is the length of the keyboard's part, 16 bytes a unit; the package follows it.
void PackageUpdate(ByteView input) {
  if (input.empty()) return;
  const size_t size = std::min<size_t>(input[0] * size_t{16}, input.size() - 1);
  const ByteView replies = input.subspan(1, size);
  const MemoryFile file(MendedPackage(input.subspan(1 + size)));
  DatFileExamine datFile;
  if (!datFile.OpenDatFile(file.Path()) || !datFile.ExamineDatFile()) return;
  Require(datFile.TotalStepCount() >= 0, "a ready package has a number of steps");

  Plugged plugged({}, replies);
  std::vector<Messages> steps = RunWatched(datFile, plugged);
  Require(!HidDevice::IsOpen() && OpenHandles() == 0, "the link is closed");
  for (AXUpdate* updater : {datFile.Update1.get(), datFile.Update2.get()}) {
    if (updater == nullptr) continue;
    const auto end =
        steps.begin() + static_cast<long>(std::min<size_t>(updater->StepCount(), steps.size()));
    RequirePlannedErasesOf(*updater, {steps.begin(), end});
    RequireStepsEnd(*updater, plugged);
    steps.erase(steps.begin(), end);
  }
}

}  // namespace hollin::fuzz
