// SPDX-License-Identifier: MIT
#include "app/sleep_inhibitor.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace hollin {
namespace {

QDBusMessage InhibitCall(const QString& reason) {
  QDBusMessage call =
      QDBusMessage::createMethodCall("org.freedesktop.login1", "/org/freedesktop/login1",
                                     "org.freedesktop.login1.Manager", "Inhibit");
  call << "sleep:shutdown:idle"
       << "Hollin" << reason << "block";
  return call;
}

}  // namespace

// An answer may come when its hold is over; then its file is closed at once.
void SleepInhibitor::Hold(const QString& reason) {
  isWanted = true;
  const int hold = ++holdCount;
  const QDBusPendingCall call = QDBusConnection::systemBus().asyncCall(InhibitCall(reason));
  if (call.isError()) return;  // no bus: such a call is never finished
  auto* const watcher = new QDBusPendingCallWatcher(call, this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, hold, watcher] {
    const QDBusPendingReply<QDBusUnixFileDescriptor> reply = *watcher;
    if (isWanted && hold == holdCount && !reply.isError()) lock = reply.value();
    watcher->deleteLater();
  });
}

void SleepInhibitor::Release() {
  isWanted = false;
  lock = {};
}

}  // namespace hollin
