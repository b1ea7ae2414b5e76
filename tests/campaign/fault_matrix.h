// SPDX-License-Identifier: MIT
// Every reference update with every fault at every report, each held against the rules that must
// hold whatever the keyboard does. docs/reliability.md lists the rules.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "package/dat_file_examine.h"
#include "simulator/in_process_hidapi.h"
#include "tests/campaign/reference_updates.h"

namespace hollin::campaign {

// What goes wrong in one run, once. A second keyboard is no fault of the first one's.
struct RunFault {
  std::optional<simulator::Fault> fault;
  uint64_t secondKeyboardAt = 0;  // a report of the host's, from 1; 0 for never
};
[[nodiscard]] std::string TextOf(const RunFault& fault);

// What an update did on the wire and how it ended.
struct RunResult {
  bool succeeded = false;
  bool hasStruck = false;
  size_t reports = 0;
  std::chrono::milliseconds paused{};
  std::vector<std::string> violations;  // of the rules; empty in a good run
};

// One reference update, loaded once through a package as users have it, and run as often as is
// wanted. Writes the temporary files while it is made. One thread at a time.
class CampaignUpdate {
 public:
  explicit CampaignUpdate(ReferenceUpdate update);
  ~CampaignUpdate();
  CampaignUpdate(const CampaignUpdate&) = delete;
  CampaignUpdate& operator=(const CampaignUpdate&) = delete;

  // False when the package was refused, or the run without a fault does not do what the reference
  // does; then there is nothing to inject faults into.
  [[nodiscard]] bool IsReady() const { return isReady; }
  [[nodiscard]] const std::string& Name() const { return update.name; }
  [[nodiscard]] uint64_t HostReports() const { return healthyReports; }
  [[nodiscard]] uint64_t KeyboardReports() const { return keyboardReports; }

  // All faults of the matrix, in a fixed order.
  [[nodiscard]] std::vector<RunFault> Faults() const;

  // One run with the fault and a healthy one after it.
  [[nodiscard]] RunResult Run(const RunFault& fault);

 private:
  struct Trace {
    std::vector<Bytes> reports;
    std::vector<std::chrono::milliseconds> pauses;
    std::vector<int32_t> progress;
    bool succeeded = false;
    simulator::Keyboard* second = nullptr;  // if it came; lives until hidapi's next reset
  };

  [[nodiscard]] bool Load();
  [[nodiscard]] simulator::KeyboardOptions OptionsFor(const RunFault& fault) const;
  [[nodiscard]] Trace RunProgram(simulator::Keyboard& keyboard, uint64_t secondKeyboardAt);
  [[nodiscard]] bool HasStruck(const Trace& trace, const simulator::Keyboard& keyboard) const;
  void CheckRun(const Trace& trace, simulator::Keyboard& keyboard, const RunFault& fault,
                RunResult& result);
  void CheckEnd(const Trace& trace, RunResult& result) const;
  void CheckLink(RunResult& result) const;
  void CheckPlaces(simulator::Keyboard& keyboard, RunResult& result) const;
  void CheckAgainstReference(const Trace& trace, simulator::Keyboard& keyboard,
                             const RunFault& fault, RunResult& result) const;
  void CheckSecondRun(simulator::Keyboard& keyboard, RunResult& result);
  [[nodiscard]] bool HoldsImages(simulator::Keyboard& keyboard) const;

  ReferenceUpdate update;
  Places places;
  std::array<Bytes, 3> expected;  // of the chips after a success
  simulator::InProcessHidapi& hidapi = simulator::InProcessHidapi::Instance();
  DatFileExamine datFile;
  uint64_t healthyReports = 0;
  uint64_t keyboardReports = 0;
  uint64_t ownFaults = 0;  // of the update itself, that struck in the healthy run
  std::chrono::milliseconds healthyPause{};
  bool isReady = false;
};

}  // namespace hollin::campaign
