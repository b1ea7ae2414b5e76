// SPDX-License-Identifier: MIT
#include "app/quit_signals.h"

#include <fcntl.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QEvent>
#include <QSocketNotifier>
#include <array>
#include <cerrno>
#include <csignal>
#include <utility>

namespace hollin {
namespace {

std::array<int, 2> signalPipe = {-1, -1};

// Only writes: little else is allowed in a signal handler. A full pipe has calls enough in it.
extern "C" void NoteSignal(int /*number*/) {
  const int error = errno;
  const char byte = 0;
  [[maybe_unused]] const ssize_t written = write(signalPipe[1], &byte, 1);
  errno = error;
}

bool IsIgnored(int number) {
  struct sigaction current = {};
  return sigaction(number, nullptr, &current) == 0 && current.sa_handler == SIG_IGN;
}

void Catch(int number) {
  struct sigaction action = {};
  action.sa_handler = NoteSignal;
  action.sa_flags = SA_RESTART;
  static_cast<void>(sigaction(number, &action, nullptr));
}

// Sees the application's events before the application does.
class QuitEventFilter : public QObject {
 public:
  QuitEventFilter(QObject* parent, std::function<void()> quitCall)
      : QObject(parent), quit(std::move(quitCall)) {}

  bool eventFilter(QObject* object, QEvent* event) override {
    if (object != parent() || event->type() != QEvent::Quit) return false;
    event->ignore();  // whether it really ends is not known yet
    QMetaObject::invokeMethod(this, quit, Qt::QueuedConnection);
    return true;
  }

 private:
  std::function<void()> quit;
};

void EmptyPipe() {
  std::array<char, 64> bytes{};
  while (read(signalPipe[0], bytes.data(), bytes.size()) > 0) continue;
}

}  // namespace

void CallOnQuitSignals(std::function<void()> quit) {
  if (pipe2(signalPipe.data(), O_CLOEXEC | O_NONBLOCK) != 0) return;  // they end us the hard way
  auto* const notifier =
      new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, QCoreApplication::instance());
  QObject::connect(notifier, &QSocketNotifier::activated, [quit = std::move(quit)] {
    EmptyPipe();
    quit();
  });
  Catch(SIGTERM);
  Catch(SIGINT);
  if (!IsIgnored(SIGHUP)) Catch(SIGHUP);
}

void CallOnQuitEvent(std::function<void()> quit) {
  QCoreApplication* const application = QCoreApplication::instance();
  application->installEventFilter(new QuitEventFilter(application, std::move(quit)));
}

}  // namespace hollin
