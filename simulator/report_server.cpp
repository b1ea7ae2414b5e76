// SPDX-License-Identifier: MIT
#include "simulator/report_server.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

namespace hollin::simulator {
namespace {

void CloseFile(int& file) {
  if (file >= 0) close(file);
  file = -1;
}

// The size of the next packet, 0 at the end and for errors; a descriptor that came with it is in
// `passed` and the caller's.
size_t ReceivePacket(int connection, std::span<uint8_t> packet, int& passed) {
  iovec bytes{packet.data(), packet.size()};
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))]{};
  msghdr message{};
  message.msg_iov = &bytes;
  message.msg_iovlen = 1;
  message.msg_control = control;
  message.msg_controllen = sizeof control;
  const ssize_t size = recvmsg(connection, &message, MSG_DONTWAIT | MSG_CMSG_CLOEXEC);
  if (size <= 0) return 0;
  const cmsghdr* header = CMSG_FIRSTHDR(&message);
  if (header != nullptr && header->cmsg_type == SCM_RIGHTS) {
    std::memcpy(&passed, CMSG_DATA(header), sizeof passed);
  }
  return static_cast<size_t>(size);
}

std::chrono::nanoseconds SkippedTime(std::span<const uint8_t> bytes) {
  uint64_t count = 0;
  for (size_t i = bytes.size(); i > 0; i--) count = count << 8 | bytes[i - 1];
  return std::chrono::nanoseconds(static_cast<int64_t>(count));
}

}  // namespace

ReportServer::ReportServer(Keyboard& keyboard, std::string directory, bool verbose)
    : keyboard(keyboard),
      directory(std::move(directory)),
      socketFile{keyboard.Options().vendorId, keyboard.Options().productId, getpid()},
      news(verbose) {}

ReportServer::~ReportServer() {
  StopListening();
  DropClients(true);
}

bool ReportServer::Start() {
  mkdir(directory.c_str(), 0755);
  return signals.Block() && Listen();
}

bool ReportServer::Listen() {
  listener = ListenAt(directory, socketFile);
  return listener >= 0;
}

void ReportServer::StopListening() {
  if (listener < 0) return;
  unlink((directory + "/" + SocketName(socketFile)).c_str());
  CloseFile(listener);
}

bool ReportServer::Run() {
  for (;;) {
    std::vector<pollfd> waiting{{signals.File(), POLLIN, 0}, {listener, POLLIN, 0}};
    for (const Client& client : clients) waiting.push_back({client.commands, POLLIN, 0});
    if (poll(waiting.data(), waiting.size(), -1) < 0 && errno != EINTR) return false;
    size_t index = 2;
    for (Client& client : clients) {
      if (waiting[index++].revents != 0 && !client.gone) Serve(client);
    }
    if (waiting[0].revents != 0 && !signals.Obey(keyboard)) return true;
    FollowPlug();
    if (waiting[1].revents != 0 && listener >= 0) Accept();
    DropClients(false);
  }
}

void ReportServer::Accept() {
  const int connection = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
  if (connection >= 0) clients.push_back({connection});
}

void ReportServer::Serve(Client& client) {
  uint8_t packet[kLongestPacket];
  int passed = -1;
  const size_t size = ReceivePacket(client.commands, packet, passed);
  if (size == 0) {
    client.gone = true;
    return;
  }
  const uint8_t answer = Obey(client, std::span(packet, size), passed) ? kYes : kNo;
  send(client.commands, &answer, 1, MSG_NOSIGNAL | MSG_DONTWAIT);
  news.Print(keyboard);
}

// The passed descriptor goes over to the client by kOpen and is closed by everything else.
bool ReportServer::Obey(Client& client, std::span<const uint8_t> packet, int passed) {
  if (packet[0] == kOpen) return OpenFor(client, passed);
  CloseFile(passed);
  if (client.reports < 0) return false;
  if (packet[0] == kReport) return TakeReport(packet.subspan(1));
  if (packet[0] != kTime || packet.size() != 9) return false;
  keyboard.PassTime(SkippedTime(packet.subspan(1)));
  return true;
}

bool ReportServer::OpenFor(Client& client, int passed) {
  if (passed < 0 || client.reports >= 0 || !keyboard.Open()) {
    CloseFile(passed);
    return false;
  }
  client.reports = passed;
  news.Print("opened");
  return true;
}

bool ReportServer::TakeReport(std::span<const uint8_t> report) {
  Deliveries deliveries;
  const bool taken = keyboard.TakeReport(report, deliveries);
  for (const Delivery& delivery : deliveries) Send(delivery);
  return taken;
}

// Every program that has the keyboard open gets every report. One that does not read them loses the
// newest when its queue is full.
void ReportServer::Send(const Delivery& delivery) {
  Bytes packet{delivery.readFails ? kReadFailure : kReport};
  packet.insert(packet.end(), delivery.report.begin(), delivery.report.end());
  for (const Client& client : clients) {
    if (client.reports < 0) continue;
    send(client.reports, packet.data(), packet.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  }
}

// The socket is there exactly while the keyboard is plugged in, and the words come when it is so.
void ReportServer::FollowPlug() {
  if (keyboard.Attached() == (listener >= 0)) return;
  if (keyboard.Attached()) {
    if (!Listen()) std::fprintf(stderr, "ts30-simulator: cannot listen in %s\n", directory.c_str());
  } else {
    StopListening();
    DropClients(true);
  }
  news.Print(keyboard.Attached() ? "plugged in" : "unplugged");
}

void ReportServer::DropClients(bool all) {
  std::erase_if(clients, [all](Client& client) {
    if (!all && !client.gone) return false;
    CloseFile(client.reports);
    CloseFile(client.commands);
    return true;
  });
}

}  // namespace hollin::simulator
