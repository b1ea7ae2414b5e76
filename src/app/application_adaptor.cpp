// SPDX-License-Identifier: MIT
#include "app/application_adaptor.h"

#include <QMetaObject>
#include <optional>
#include <string>

#include "app/bus_service.h"
#include "app/file_uri.h"
#include "app/main_window.h"
#include "base/log.h"

namespace hollin {
namespace {

// The window's next wish to come to the front is then granted, where the desktop asks for this.
// Older starters put the same under the older name. The environment is not touched while a worker
// lives, which may be reading it.
void TakeActivation(const QVariantMap& platformData) {
  if (MainWindow::IsWorkerAlive()) return;
  for (const char* key : {kActivationToken, kStartupId}) {
    const QByteArray token = platformData.value(key).toString().toUtf8();
    if (token.isEmpty()) continue;
    qputenv("XDG_ACTIVATION_TOKEN", token);
    return;
  }
}

}  // namespace

ApplicationAdaptor::ApplicationAdaptor(BusService* ownService)
    : QDBusAbstractAdaptor(ownService), service(ownService) {}

void ApplicationAdaptor::Activate(const QVariantMap& platformData) {
  TakeActivation(platformData);
  Post([this] { emit service->ActivateRequested(); });
}

// The window shows one package, so the first file is it.
void ApplicationAdaptor::Open(const QStringList& uris, const QVariantMap& platformData) {
  Activate(platformData);
  for (const QString& uri : uris) {
    const std::optional<std::string> path = PathOfFileUri(uri.toStdString());
    if (path) return Post([this, path] { emit service->OpenRequested(*path); });
    Log("Cannot open what is not a file of this computer: " + uri.toStdString());
  }
}

void ApplicationAdaptor::ActivateAction(const QString& name, const QVariantList& /*parameter*/,
                                        const QVariantMap& platformData) {
  TakeActivation(platformData);
  if (name != "quit") return;
  Post([this] {
    BusService::Flush();
    emit service->QuitRequested();
  });
}

void ApplicationAdaptor::Post(const std::function<void()>& function) {
  QMetaObject::invokeMethod(service, function, Qt::QueuedConnection);
}

}  // namespace hollin
