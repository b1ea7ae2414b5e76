// SPDX-License-Identifier: MIT
// A TS30 keyboard in update mode, in software. It is given the host's reports one by one and
// answers with its own; docs/simulator.md and docs/protocol.md describe what it understands. It
// reads the bytes by itself and shares no packet code with the updaters, so that the two cannot
// misread the protocol alike.
//
// One thread at a time. Nothing the host sends makes it fail: what it does not understand is
// refused with the status 0xF0, and a report that belongs to no message is dropped.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "simulator/a1_flash.h"
#include "simulator/a2_flash.h"
#include "simulator/c1_flash.h"
#include "simulator/fault.h"
#include "simulator/flash_unit.h"
#include "simulator/host_message.h"
#include "simulator/virtual_clock.h"

namespace hollin::simulator {

struct KeyboardOptions {
  uint16_t vendorId = 0x1C3E;
  uint16_t productId = 0x2B91;
  A1Profile a1 = {};
  A2Profile a2 = {};
  C1Profile c1 = {};
  std::vector<Fault> faults = {};
  bool realTime = false;  // false: time passes only by PassTime
};

// What the host's next read gets: a report, usually of 64 bytes, or a failure.
struct Delivery {
  Bytes report;
  bool readFails = false;
};
using Deliveries = std::vector<Delivery>;

// What happened so far, for tests.
struct KeyboardRecord {
  FaultCounters counters;
  std::vector<Bytes> commands;  // whole messages, without the data of blocks
  uint64_t blocks = 0;          // announced blocks whose data arrived
  uint64_t abandonedBlocks = 0;
  uint64_t refusals = 0;  // replies 0xF0
  uint64_t plugged = 1;   // how often it was plugged in
};

class Keyboard {
 public:
  explicit Keyboard(KeyboardOptions given = {});

  // Moves the flash contents into the files that the options name. False, with the file's name,
  // when one cannot be used.
  [[nodiscard]] bool KeepContents(std::string& failedFile);

  // A program opens the keyboard. False when it is not there or a fault refuses it.
  [[nodiscard]] bool Open();

  // One report of the host; what the host can read then is appended to `deliveries`. False when
  // the host's write fails. Afterwards the keyboard may be gone.
  [[nodiscard]] bool TakeReport(ByteView report, Deliveries& deliveries);

  [[nodiscard]] bool Attached() const { return attached; }
  // Pulling the plug forgets everything but the flash.
  void Unplug();
  void Replug();

  void PassTime(VirtualClock::Duration length) { clock.Pass(length); }

  [[nodiscard]] const KeyboardOptions& Options() const { return options; }
  [[nodiscard]] const KeyboardRecord& Record() const { return record; }
  [[nodiscard]] uint64_t FaultsStruck() const { return faults.Struck(); }
  [[nodiscard]] A1Flash& A1() { return *a1; }
  [[nodiscard]] A2Flash& A2() { return *a2; }
  [[nodiscard]] C1Flash& C1() { return *c1; }

 private:
  struct PendingBlock {
    Block block;
    Bytes data;
  };

  template <typename Unit, typename... Arguments>
  Unit* Add(const std::string& file, Arguments&&... arguments);
  void Take(ByteView message, Replies& replies);
  [[nodiscard]] bool TakeBlockData(ByteView message, Replies& replies);
  void Execute(ByteView command, Replies& replies);
  [[nodiscard]] bool Obey(ByteView command, Replies& replies);
  [[nodiscard]] bool SelectUnit(ByteView command, Replies& replies);
  [[nodiscard]] bool AnnounceBlock(ByteView header, Replies& replies);
  [[nodiscard]] bool SumRange(ByteView command, Replies& replies);
  [[nodiscard]] bool End(ByteView command, Replies& replies);

  void Send(Replies replies, Deliveries& deliveries);
  void Spoil(Reply& reply);
  [[nodiscard]] bool Withheld(const Reply& reply);
  void SendReport(Bytes report, Deliveries& deliveries);
  void SpoilReport(Bytes& report);
  [[nodiscard]] FaultCounters NextReport() const;

  KeyboardOptions options;
  VirtualClock clock;
  FaultPlan faults;
  KeyboardRecord record;
  std::vector<std::unique_ptr<FlashUnit>> units;
  std::vector<std::string> files;  // of the units
  A1Flash* a1;
  A2Flash* a2;
  C1Flash* c1;
  bool attached = true;
  MessageAssembler assembler;
  FlashUnit* selected = nullptr;  // by the mode command, until the end command
  std::optional<PendingBlock> pending;
  Replies late;      // held back by a fault
  Bytes lastReport;  // as it was sent
};

}  // namespace hollin::simulator
