// SPDX-License-Identifier: MIT
// Waiting for what this process's own event loop does, without a clock that decides.
#pragma once

#include <QAbstractEventDispatcher>
#include <QTest>
#include <functional>

namespace hollin {

// Runs the event loop until there is nothing left to do at once: what has not happened by then
// happens only when something else comes.
inline void Settle() {
  while (QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents)) {
  }
}

// Runs the event loop until `isTrue`, or so long that it never will be; the last answer.
[[nodiscard]] inline bool Await(const std::function<bool()>& isTrue) {
  constexpr int kNever = 60'000;  // ms
  return QTest::qWaitFor(isTrue, kNever);
}

}  // namespace hollin
