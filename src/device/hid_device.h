// SPDX-License-Identifier: MIT
// The one link to the keyboard: counts the HID devices with the configured ids, opens the only one,
// and carries messages of any length to it and back in reports of 64 bytes. docs/protocol.md
// describes the framing.
//
// All state is the process's, not an object's: the window that looks for the keyboard and every
// updater of a package speak through the same open device. There is no lock: the window counts
// while no update runs, and during an update one thread sends and receives in turn. Reads have no
// time limit; a keyboard that is removed ends them.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "base/bytes.h"
#include "device/update_observer.h"

struct hid_device_;  // hidapi's handle

namespace hollin {

class AXUpdate;

class HidDevice {
 public:
  // The link object, made on first use and never destroyed. It holds nothing: it stands for the
  // link.
  static HidDevice* Instance();

  // The number of attached HID devices with the ids, as hidapi lists them. Opens nothing.
  [[nodiscard]] static uint32_t DeviceCount();

  // Opens the link unless it is open; fails unless exactly one keyboard is attached. Gives
  // `updater` its link. Why the one keyboard cannot be opened is logged each time.
  [[nodiscard]] static bool Connect(AXUpdate& updater);

  [[nodiscard]] static bool Open();
  // Closes the device and hidapi itself, so that the next count starts afresh. Does nothing while
  // the link is closed.
  static void Close();
  [[nodiscard]] static bool IsOpen() { return opened; }

  // Sends one message of 1 to 2^32-1 bytes. False at the first report that cannot be sent.
  [[nodiscard]] static bool SendMessage(ByteView data);

  // Receives one reply into `buffer`, whose size is the most that is accepted; blocks until it is
  // there. A reply that breaks off after at least one good report still counts as received, so
  // callers compare what they got: they fill `buffer` beforehand with bytes that cannot equal what
  // they expect.
  [[nodiscard]] static bool ReceiveMessage(std::span<uint8_t> buffer);

  static constexpr size_t kReportSize = 64;

  static inline HidDevice* instance = nullptr;
  static inline int32_t instanceCount = 0;  // how often `instance` was made
  static inline hid_device_* handle = nullptr;
  static inline bool opened = false;
  static inline uint16_t vendorId = 0;  // set by the program at start, from its configuration
  static inline uint16_t productId = 0;
  static inline std::array<uint8_t, kReportSize> report{};         // shared by both directions
  static inline UpdateFailure lastFailure = UpdateFailure::kNone;  // why the last operation failed

 private:
  HidDevice() = default;
};

}  // namespace hollin
