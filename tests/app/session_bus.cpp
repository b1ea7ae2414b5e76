// SPDX-License-Identifier: MIT
#include "tests/app/session_bus.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <csignal>
#include <stdexcept>

namespace hollin {
namespace {

constexpr const char* kConnectionName = "test";

const Subprocess::Setup kSessionDaemon = {
    .command = {"/usr/bin/dbus-daemon", "--session", "--nofork", "--print-address=1"}};

QDBusMessage CallOf(const QString& method, const QVariantList& arguments) {
  QDBusMessage message = QDBusMessage::createMethodCall("com.tovari.Hollin", "/com/tovari/Hollin",
                                                        "org.freedesktop.Application", method);
  message.setArguments(arguments);
  return message;
}

}  // namespace

SessionBus::SessionBus() : daemon(kSessionDaemon), connection("") {
  if (!daemon.ReadUntil("\n")) throw std::runtime_error("no session bus: " + daemon.Err());
  address = daemon.Out().substr(0, daemon.Out().find('\n'));
  connection = QDBusConnection::connectToBus(QString::fromStdString(address), kConnectionName);
  if (!connection.isConnected()) throw std::runtime_error("no session bus at " + address);
}

// A daemon that is killed leaves its socket behind.
SessionBus::~SessionBus() {
  QDBusConnection::disconnectFromBus(kConnectionName);
  daemon.Signal(SIGTERM);
  daemon.Wait();
}

bool SessionBus::Has(const QString& name) const {
  return connection.interface()->isServiceRegistered(name);
}

bool SessionBus::CallApplication(const QString& method, const QVariantList& arguments) const {
  return connection.call(CallOf(method, arguments)).type() == QDBusMessage::ReplyMessage;
}

bool SessionBus::CallFromAside(const QString& method, const QVariantList& arguments) const {
  const QDBusMessage reply = connection.call(CallOf(method, arguments), QDBus::BlockWithGui, 10000);
  return reply.type() == QDBusMessage::ReplyMessage;
}

}  // namespace hollin
