// SPDX-License-Identifier: MIT
// What a start does when the user's Hollin is running already.
#pragma once

class QMessageBox;

namespace hollin {

class InstanceLock;
struct StartRequest;

enum class StartOutcome {
  kGoOn,        // this process is the one that runs
  kHandedOver,  // the running window has taken the request
  kGivenUp,     // the user does not want to wait until the other one ends
};

// What such a start shows while it waits. Owned by the caller.
[[nodiscard]] QMessageBox* MakeAnotherHollinBox();

// Takes the lock, or finds out what to do without it. Where the running program cannot be reached,
// as a hollin-cli or one on another bus, the user is told, and the start goes on by itself as soon
// as the other one ends. May run an event loop of its own.
[[nodiscard]] StartOutcome StartOnlyOnce(InstanceLock& lock, const StartRequest& request);

}  // namespace hollin
