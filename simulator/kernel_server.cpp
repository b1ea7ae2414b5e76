// SPDX-License-Identifier: MIT
#include "simulator/kernel_server.h"

#include <poll.h>

#include <array>
#include <cerrno>
#include <cstdio>

namespace hollin::simulator {
namespace {

constexpr int kLastReportMilliseconds = 200;  // what a host that reads needs by far

}  // namespace

bool KernelServer::Start(std::string& problem) {
  problem = "cannot watch for signals";
  return signals.Block() && port.Plug(problem);
}

bool KernelServer::Run() {
  for (;;) {
    const auto wanted = static_cast<short>(waiting.empty() ? POLLIN : POLLIN | POLLOUT);
    std::array<pollfd, 2> files{{{signals.File(), POLLIN, 0}, {port.File(), wanted, 0}}};
    if (poll(files.data(), files.size(), -1) < 0 && errno != EINTR) return false;
    if (files[0].revents != 0 && !signals.Obey(keyboard)) return true;
    if ((files[1].revents & POLLIN) != 0) TakeReport();
    SendWaiting();
    FollowPlug();
  }
}

void KernelServer::TakeReport() {
  const std::optional<Bytes> report = port.Read();
  if (!report) return;
  Deliveries deliveries;
  static_cast<void>(keyboard.TakeReport(*report, deliveries));
  for (Delivery& delivery : deliveries) {
    if (!delivery.readFails) waiting.push_back(std::move(delivery.report));
  }
  news.Print(keyboard);
}

void KernelServer::SendWaiting() {
  while (!waiting.empty() && port.File() >= 0 && port.Write(waiting.front())) waiting.pop_front();
}

// A report that the keyboard sent before it was unplugged is on its way and still arrives.
void KernelServer::SendLast() {
  pollfd file{port.File(), POLLOUT, 0};
  while (poll(&file, 1, kLastReportMilliseconds) == 1 && !waiting.empty()) SendWaiting();
  waiting.clear();
}

void KernelServer::FollowPlug() {
  if (keyboard.Attached() == (port.File() >= 0)) return;
  std::string problem;
  if (!keyboard.Attached()) {
    SendLast();
    port.Unplug();
  } else if (!port.Plug(problem)) {
    std::fprintf(stderr, "ts30-simulator: %s\n", problem.c_str());
    keyboard.Unplug();
    return;
  }
  news.Print(keyboard.Attached() ? "plugged in" : "unplugged");
}

}  // namespace hollin::simulator
