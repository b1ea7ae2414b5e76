// SPDX-License-Identifier: MIT
// Keeps the machine from sleeping, shutting down and idling, through logind. Where there is none,
// or it refuses, nothing happens and nothing is said. It is never waited for. Main thread only.
#pragma once

#include <QDBusUnixFileDescriptor>
#include <QObject>

namespace hollin {

class SleepInhibitor : public QObject {
  Q_OBJECT

 public:
  using QObject::QObject;

  // From now until Release. The reason is shown to users who want to switch the machine off.
  void Hold(const QString& reason);
  void Release();
  // Whether logind has agreed.
  [[nodiscard]] bool IsHolding() const { return lock.isValid(); }

 private:
  // logind holds the machine as long as this file is open.
  QDBusUnixFileDescriptor lock;
  int holdCount = 0;
  bool isWanted = false;
};

}  // namespace hollin
