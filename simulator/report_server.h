// SPDX-License-Identifier: MIT
// Offers one keyboard to other processes through a socket in a folder (simulator/socket_file.h),
// for as long as it is plugged in; the socket's name goes with the keyboard. The control signals
// unplug it, plug it in again and end the service. One thread.
#pragma once

#include <list>
#include <span>
#include <string>

#include "simulator/control_signals.h"
#include "simulator/keyboard.h"
#include "simulator/news.h"
#include "simulator/socket_file.h"

namespace hollin::simulator {

class ReportServer {
 public:
  // The keyboard is lent. `verbose` prints what the keyboard is asked and what becomes of it.
  ReportServer(Keyboard& keyboard, std::string directory, bool verbose);
  ReportServer(const ReportServer&) = delete;
  ReportServer& operator=(const ReportServer&) = delete;
  ~ReportServer();

  // Blocks the signals and puts the keyboard into the folder, which is made if need be. False when
  // that fails.
  [[nodiscard]] bool Start();
  // Serves until a signal ends it. False on an error of the system.
  [[nodiscard]] bool Run();

 private:
  struct Client {
    int commands = -1;
    int reports = -1;  // -1 until it opened the keyboard
    bool gone = false;
  };

  [[nodiscard]] bool Listen();
  void StopListening();
  void Accept();
  void Serve(Client& client);
  [[nodiscard]] bool Obey(Client& client, std::span<const uint8_t> packet, int passed);
  [[nodiscard]] bool OpenFor(Client& client, int passed);
  [[nodiscard]] bool TakeReport(std::span<const uint8_t> report);
  void Send(const Delivery& delivery);
  void FollowPlug();
  void DropClients(bool all);

  Keyboard& keyboard;
  std::string directory;
  SocketFile socketFile;
  ControlSignals signals;
  News news;
  int listener = -1;  // -1 while unplugged
  std::list<Client> clients;
};

}  // namespace hollin::simulator
