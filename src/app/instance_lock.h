// SPDX-License-Identifier: MIT
// Keeps two Hollins of one user apart, the window and the command line alike: they would overwrite
// each other's temporary files and take each other's replies. The lock is a locked file, so it goes
// with its process, however that ends; the file itself stays. docs/one-instance.md says where it
// lies.
#pragma once

namespace hollin {

enum class LockState {
  kHeld,
  kBusy,         // another process has it
  kUnavailable,  // there is no place for the file; the log says why
};

class InstanceLock {
 public:
  InstanceLock() = default;
  ~InstanceLock();
  InstanceLock(const InstanceLock&) = delete;
  InstanceLock& operator=(const InstanceLock&) = delete;

  // Takes the lock until this object goes. Does not wait; may be asked again.
  [[nodiscard]] LockState Take();

 private:
  int file = -1;
};

}  // namespace hollin
