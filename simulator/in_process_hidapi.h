// SPDX-License-Identifier: MIT
// hidapi's functions over keyboards in the same process, for unit tests: whoever links
// hollin_simulated_hidapi in place of hidapi reaches the keyboards that are attached here. Nothing
// ever blocks: a read that would wait for ever fails and says so in `wouldBlock`.
//
// One thread at a time.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "simulator/hid_backend.h"
#include "simulator/keyboard.h"

namespace hollin::simulator {

class InProcessHidapi : public HidBackend {
 public:
  static InProcessHidapi& Instance();

  // Plugs a keyboard in; it is owned here and lives until it is detached. Detaching pulls its plug.
  Keyboard& Attach(KeyboardOptions options = {});
  void Detach(const Keyboard& keyboard);
  // Detaches all, forgets what was counted and tells no one any more. Handles that are still open
  // stay valid for closing.
  void Reset();

  // Tells every keyboard that time has passed, as a replaced Pause should.
  void PassTime(VirtualClock::Duration length);

  bool recordCalls = true;         // off where a test makes millions of them
  std::vector<std::string> calls;  // every call in order, in the words of docs/simulator.md
  size_t enumerations = 0;
  size_t freedLists = 0;  // of enumerations, empty ones included
  size_t opens = 0;       // that succeeded
  size_t closes = 0;
  size_t exits = 0;
  size_t openHandles = 0;  // right now; Reset leaves it
  bool wouldBlock = false;

  // Told of every report before a keyboard gets it, and of every read that would wait for ever.
  // What is done there may pull plugs.
  std::function<void(std::span<const uint8_t> report)> beforeWrite;
  std::function<void()> onBlock;

  std::vector<ListedKeyboard> List() override;
  std::unique_ptr<OpenedKeyboard> Open(const std::string& path) override;
  void Enumerated() override { enumerations++; }
  void FreedList() override { freedLists++; }
  void Exited() override { exits++; }
  [[nodiscard]] bool RecordsCalls() const override { return recordCalls; }
  void Record(const std::string& call) override { calls.push_back(call); }

 private:
  struct Slot;
  class Handle;

  InProcessHidapi();
  ~InProcessHidapi() override;

  std::vector<std::shared_ptr<Slot>> places;
  uint64_t attachments = 0;  // for paths that are never used again
};

}  // namespace hollin::simulator
