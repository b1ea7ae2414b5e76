// SPDX-License-Identifier: MIT
// Tells when keyboards may have come or gone. One plug makes several events, and the right to open
// a keyboard arrives some milliseconds after its node; so the news is told when nothing more has
// come for a while. It asks no keyboard.
#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <QTimer>
#include <chrono>
#include <memory>
#include <string>

namespace hollin {

// Where the events come from.
class DeviceEvents {
 public:
  DeviceEvents() = default;
  virtual ~DeviceEvents() = default;
  DeviceEvents(const DeviceEvents&) = delete;
  DeviceEvents& operator=(const DeviceEvents&) = delete;

  // Is readable while there are events; -1 where one has to look from time to time.
  [[nodiscard]] virtual int Descriptor() const = 0;
  // Takes all that have come, without waiting. False when there were none.
  virtual bool TakeAll() = 0;
};

// The HID devices as udev tells of them after its rules were applied, or the kernel where no udev
// runs. Null where neither can be heard, as in a sandbox.
[[nodiscard]] std::unique_ptr<DeviceEvents> MonitorEvents();
// Links that come, go and change in a folder, such as those of /sys/class/hidraw.
[[nodiscard]] std::unique_ptr<DeviceEvents> FolderEvents(const std::string& folder);

class DeviceWatcher : public QObject {
  Q_OBJECT

 public:
  static constexpr std::chrono::milliseconds kQuiet{300};     // after the last event
  static constexpr std::chrono::milliseconds kBetween{2000};  // looks, where nothing tells

  explicit DeviceWatcher(std::unique_ptr<DeviceEvents> events, QObject* parent = nullptr);

 signals:
  void DevicesChanged();

 private:
  void NoteEvents();

  std::unique_ptr<DeviceEvents> events;
  std::unique_ptr<QSocketNotifier> notifier;  // goes before what it listens to
  QTimer quiet{this}, look{this};
};

}  // namespace hollin
