// SPDX-License-Identifier: MIT
// Why a step failed, as data: the operations themselves answer only true or false, and words are
// made by whoever shows them. A caller that wants the reason lends an observer.
#pragma once

#include <cstdint>

#include "base/bytes.h"

namespace hollin {

enum class UpdateFailure {
  kNone,
  kNoKeyboard,        // no keyboard with the configured ids is attached
  kSeveralKeyboards,  // more than one is
  kNotOpened,         // the one keyboard could not be opened: rights, or it just went away
  kLinkClosed,        // a command that needs the open link found it closed
  kSendFailed,        // a report could not be sent
  kReceiveFailed,  // the keyboard went away while its reply was awaited, or the reply was malformed
  kWrongReply,     // a reply came, but not the expected one
  kNotErased,      // a sector did not read back as erased in time
  kFlashTooSmall,  // the flash that the keyboard reports cannot hold the image
  kNoFreeSector,   // every sector of the flash is reserved
  kBeyondPlan,     // the step or its bytes lie outside what was planned; nothing was sent
};

// One failed command. The views are valid during the call only.
struct CommandFailure {
  UpdateFailure reason = UpdateFailure::kNone;
  ByteView command;   // the command last sent, header bytes only; empty before the first
  ByteView expected;  // the reply that was wanted, empty where none was
  ByteView reply;     // what came; bytes that did not come are the complement of the expected ones
};

// Lent to an updater, which never owns it and calls it on the thread that runs the steps. A retried
// command that works in the end was reported too: only the last report before a failed step says
// why it failed.
class UpdateObserver {
 public:
  UpdateObserver() = default;
  UpdateObserver(const UpdateObserver&) = delete;
  UpdateObserver& operator=(const UpdateObserver&) = delete;
  virtual ~UpdateObserver() = default;

  virtual void CommandFailed(const CommandFailure& failure) = 0;
};

}  // namespace hollin
