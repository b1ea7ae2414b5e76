// SPDX-License-Identifier: MIT
// The interface org.freedesktop.Application as desktops call it.
#pragma once

#include <QDBusAbstractAdaptor>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>
#include <functional>

namespace hollin {

class BusService;

// Owned by the service that it speaks for.
class ApplicationAdaptor : public QDBusAbstractAdaptor {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

 public:
  explicit ApplicationAdaptor(BusService* ownService);

 public slots:
  void Activate(const QVariantMap& platformData);
  void Open(const QStringList& uris, const QVariantMap& platformData);
  void ActivateAction(const QString& name, const QVariantList& parameter,
                      const QVariantMap& platformData);

 private:
  void Post(const std::function<void()>& function);

  BusService* service;
};

}  // namespace hollin
