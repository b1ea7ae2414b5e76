// SPDX-License-Identifier: MIT
#include "app/bus_service.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QFile>
#include <optional>

#include "app/application_adaptor.h"
#include "app/file_uri.h"
#include "app/user_folders.h"

namespace hollin {
namespace {

constexpr char kObjectPath[] = "/com/tovari/Hollin";
constexpr char kInterface[] = "org.freedesktop.Application";
constexpr int kLongestWait = 5000;  // ms

constexpr char kActivationVariable[] = "XDG_ACTIVATION_TOKEN";
constexpr char kStartupVariable[] = "DESKTOP_STARTUP_ID";

// Where nothing says that there is a bus, the library behind QtDBus would try to start one.
bool IsBusAnnounced() {
  if (!qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS")) return true;
  const std::string runtime = UserRuntimeFolder();
  return !runtime.empty() && QFile::exists(QFile::decodeName((runtime + "/bus").c_str()));
}

std::optional<QDBusConnection> SessionBus() {
  if (!IsBusAnnounced()) return std::nullopt;
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) return std::nullopt;
  return bus;
}

QDBusMessage MessageFor(const StartRequest& request) {
  const bool hasPackage = !request.package.empty();
  QDBusMessage message = QDBusMessage::createMethodCall(kApplicationId, kObjectPath, kInterface,
                                                        hasPackage ? "Open" : "Activate");
  message.setAutoStartService(false);
  if (hasPackage) message << QStringList(QString::fromStdString(FileUriOf(request.package)));
  message << request.platformData;
  return message;
}

// The only thing that a program gets wrong by not being there.
bool IsNobodyThere(const QDBusMessage& reply) {
  const QDBusError::ErrorType type = QDBusError(reply).type();
  return type == QDBusError::ServiceUnknown || type == QDBusError::Disconnected ||
         reply.errorName() == "org.freedesktop.DBus.Error.NameHasNoOwner";
}

}  // namespace

StartRequest ReadStartRequest() {
  StartRequest request;
  const std::pair<const char*, const char*> handedOn[] = {{kActivationToken, kActivationVariable},
                                                          {kStartupId, kStartupVariable}};
  for (const auto& [key, variable] : handedOn) {
    const QString value = qEnvironmentVariable(variable);
    if (!value.isEmpty()) request.platformData.insert(key, value);
  }
  return request;
}

bool HandOver(const StartRequest& request) {
  const std::optional<QDBusConnection> bus = SessionBus();
  return bus && !IsNobodyThere(bus->call(MessageFor(request), QDBus::Block, kLongestWait));
}

void HandOverLater(const StartRequest& request, QObject* context,
                   const std::function<void(bool)>& done) {
  const std::optional<QDBusConnection> bus = SessionBus();
  if (!bus) {
    QMetaObject::invokeMethod(
        context, [done] { done(false); }, Qt::QueuedConnection);
    return;
  }
  auto* const watcher =
      new QDBusPendingCallWatcher(bus->asyncCall(MessageFor(request), kLongestWait), context);
  QObject::connect(watcher, &QDBusPendingCallWatcher::finished, context, [watcher, done] {
    watcher->deleteLater();
    done(!IsNobodyThere(watcher->reply()));
  });
}

// The library writes from a thread of its own, in order: what comes back was written, and all
// before.
void BusService::Flush() {
  constexpr int kLongestFlush = 500;  // ms
  const std::optional<QDBusConnection> bus = SessionBus();
  if (!bus) return;
  const QDBusMessage message = QDBusMessage::createMethodCall(
      "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId");
  static_cast<void>(bus->call(message, QDBus::Block, kLongestFlush));
}

BusService::BusService(QObject* parent) : QObject(parent) { new ApplicationAdaptor(this); }

BusService::State BusService::Start() {
  std::optional<QDBusConnection> bus = SessionBus();
  if (!bus || !bus->registerObject(kObjectPath, this)) return State::kNoBus;
  const auto reply = bus->interface()->registerService(kApplicationId);
  if (!reply.isValid()) return State::kNoBus;
  return reply.value() == QDBusConnectionInterface::ServiceRegistered ? State::kServing
                                                                      : State::kNameTaken;
}

}  // namespace hollin
