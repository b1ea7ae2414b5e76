// SPDX-License-Identifier: MIT
// A way in which the kernel shows the keyboard to the whole system, as a device that any program
// finds. One thread.
#pragma once

#include <optional>
#include <string>

#include "base/bytes.h"

namespace hollin::simulator {

class KernelPort {
 public:
  KernelPort() = default;
  KernelPort(const KernelPort&) = delete;
  KernelPort& operator=(const KernelPort&) = delete;
  virtual ~KernelPort() = default;

  // The keyboard appears. False, with what hinders it in `problem`, when the system has no such
  // way or does not allow it.
  [[nodiscard]] virtual bool Plug(std::string& problem) = 0;
  // The keyboard is gone. Does nothing while it is not there.
  virtual void Unplug() = 0;

  // To wait on: readable when the host may have sent something, writable when the next report may
  // be written. -1 while unplugged.
  [[nodiscard]] virtual int File() const = 0;
  // The host's next report; none when what came is not a report. Does not block.
  [[nodiscard]] virtual std::optional<Bytes> Read() = 0;
  // Sends a report to the host. False when it must be tried again once the file is writable.
  [[nodiscard]] virtual bool Write(ByteView report) = 0;
};

}  // namespace hollin::simulator
