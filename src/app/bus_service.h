// SPDX-License-Identifier: MIT
// The program on the session bus, as desktops start and address it: the name "com.tovari.Hollin"
// and the interface org.freedesktop.Application. docs/one-instance.md describes both.
#pragma once

#include <QObject>
#include <QVariantMap>
#include <functional>
#include <string>

namespace hollin {

// What the platform data of org.freedesktop.Application may hold.
inline constexpr char kActivationToken[] = "activation-token";
inline constexpr char kStartupId[] = "desktop-startup-id";

// What somebody wants who starts the program.
struct StartRequest {
  std::string package = {};       // an absolute path in the file system's own bytes, or empty
  QVariantMap platformData = {};  // the right to take the focus, handed from program to program
};

// The request of this process. Before QApplication is made, which takes some of it away.
[[nodiscard]] StartRequest ReadStartRequest();

// Hands a request to the program that has the name. False where there is none, or no bus. Does not
// wait for more than that program's answer, and for that not long.
[[nodiscard]] bool HandOver(const StartRequest& request);
// The same without waiting: `done` gets the answer from the event loop, unless `context` has gone
// by then.
void HandOverLater(const StartRequest& request, QObject* context,
                   const std::function<void(bool)>& done);

class BusService : public QObject {
  Q_OBJECT

 public:
  enum class State {
    kServing,
    kNameTaken,  // another process has it
    kNoBus,
  };

  explicit BusService(QObject* parent = nullptr);

  // Makes the program known. The signals come from the event loop, never from within the bus's
  // call: whoever called must not wait until an alert is dismissed.
  [[nodiscard]] State Start();
  // What has been answered so far is on its way to the caller when this returns. For a program that
  // is about to end.
  static void Flush();

 signals:
  void ActivateRequested();
  void OpenRequested(const std::string& path);
  void QuitRequested();
};

}  // namespace hollin
