// SPDX-License-Identifier: MIT
// Which alerts are up, whoever shows them: what comes from outside waits for their end. Main thread
// only.
#pragma once

#include <QObject>

namespace hollin {

// Counts one alert as long as it lives.
class AlertScope {
 public:
  AlertScope();
  ~AlertScope();
  AlertScope(const AlertScope&) = delete;
  AlertScope& operator=(const AlertScope&) = delete;

  [[nodiscard]] static bool IsAny();
};

class AlertWatch : public QObject {
  Q_OBJECT

 public:
  [[nodiscard]] static AlertWatch& Instance();

 signals:
  // The last alert has gone. Told while its caller still runs, so a queued connection is what one
  // wants.
  void AllGone();
};

}  // namespace hollin
