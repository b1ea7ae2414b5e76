// SPDX-License-Identifier: MIT
// A session bus for programs under test, and what a desktop says on it.
#pragma once

#include <QDBusConnection>
#include <QVariantList>
#include <string>
#include <utility>

#include "tests/support/subprocess.h"

namespace hollin {

class SessionBus {
 public:
  SessionBus();
  ~SessionBus();
  SessionBus(const SessionBus&) = delete;
  SessionBus& operator=(const SessionBus&) = delete;

  // What a program needs in order to be on this bus.
  [[nodiscard]] std::pair<std::string, std::string> Environment() const {
    return {"DBUS_SESSION_BUS_ADDRESS", address};
  }

  // Whether somebody has that name.
  [[nodiscard]] bool Has(const QString& name) const;
  [[nodiscard]] QDBusConnection Connection() const { return connection; }
  // The same as below to a service of this very process, whose event loop runs meanwhile.
  [[nodiscard]] bool CallFromAside(const QString& method, const QVariantList& arguments) const;
  // Calls the program as desktops do. Whether there was a reply.
  [[nodiscard]] bool CallApplication(const QString& method, const QVariantList& arguments) const;

 private:
  Subprocess daemon;
  std::string address;
  QDBusConnection connection;
};

}  // namespace hollin
