// SPDX-License-Identifier: MIT
#include "app/single_instance.h"

#include <QCoreApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <chrono>
#include <memory>

#include "app/alert.h"
#include "app/bus_service.h"
#include "app/instance_lock.h"
#include "base/pause.h"

namespace hollin {
namespace {

using namespace std::chrono_literals;

// A window that is just being started has the lock already and its name not yet.
constexpr int kAttempts = 10;
constexpr auto kBetweenAttempts = 100ms;
constexpr auto kBetweenLooks = 250ms;

struct SingleInstanceText {
  Q_DECLARE_TR_FUNCTIONS(SingleInstance)
};

bool IsFree(InstanceLock& lock) { return lock.Take() != LockState::kBusy; }

StartOutcome AskToWait(InstanceLock& lock, const StartRequest& request) {
  const std::unique_ptr<QMessageBox> box(MakeAnotherHollinBox());
  StartOutcome outcome = StartOutcome::kGivenUp;
  QTimer look;
  look.setInterval(kBetweenLooks);
  look.setSingleShot(true);
  const auto endWith = [&](StartOutcome newOutcome) {
    outcome = newOutcome;
    box->done(0);
  };
  // The other one may be silent: the alert is answered meanwhile.
  QObject::connect(&look, &QTimer::timeout, box.get(), [&] {
    if (IsFree(lock)) return endWith(StartOutcome::kGoOn);
    HandOverLater(request, box.get(), [&](bool isHandedOver) {
      if (isHandedOver) return endWith(StartOutcome::kHandedOver);
      look.start();
    });
  });
  look.start();
  box->exec();
  return outcome;
}

}  // namespace

QMessageBox* MakeAnotherHollinBox() {
  QMessageBox* const box = MakeAlertBox(
      {.message = SingleInstanceText::tr("Another Hollin is at work"),
       .informativeText = SingleInstanceText::tr("Hollin starts as soon as it has ended."),
       .style = AlertStyle::kWarning},
      nullptr);
  box->addButton(SingleInstanceText::tr("Quit"), QMessageBox::RejectRole);
  return box;
}

StartOutcome StartOnlyOnce(InstanceLock& lock, const StartRequest& request) {
  for (int attempt = 0; attempt < kAttempts; attempt++) {
    if (attempt > 0) Pause(kBetweenAttempts);
    if (IsFree(lock)) return StartOutcome::kGoOn;
    if (HandOver(request)) return StartOutcome::kHandedOver;
  }
  return AskToWait(lock, request);
}

}  // namespace hollin
