// SPDX-License-Identifier: MIT
#include "simulator/kernel_server.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <thread>

namespace hollin::simulator {
namespace {

// A port whose host is the other end of a socket pair.
class SocketPort : public KernelPort {
 public:
  ~SocketPort() override {
    Unplug();
    for (size_t i = 0; i < plugs; i++) close(hosts[i]);
  }

  bool Plug(std::string& problem) override {
    if (refuses) problem = "refused";
    if (refuses) return false;
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends.data()) != 0) return false;
    file = ends[0];
    hosts[plugs] = ends[1];
    plugs++;
    return true;
  }

  void Unplug() override {
    if (file >= 0) close(file);
    file = -1;
  }

  int File() const override { return file; }

  std::optional<Bytes> Read() override {
    Bytes report(64);
    const ssize_t size = recv(file, report.data(), report.size(), MSG_DONTWAIT);
    if (size <= 0) return std::nullopt;
    report.resize(static_cast<size_t>(size));
    return report;
  }

  // Busy at first, as a host that fetches slowly makes it.
  bool Write(ByteView report) override {
    if (busy-- > 0) return false;
    busy = 1;
    return send(file, report.data(), report.size(), MSG_DONTWAIT) >= 0;
  }

  bool refuses = false;
  std::array<int, 2> hosts{};  // one for each time it was plugged in
  std::atomic<size_t> plugs = 0;

 private:
  int file = -1;
  int busy = 1;
};

Bytes Report(Bytes bytes) {
  bytes.resize(64);
  return bytes;
}

// Mode: 0x01, 0x0A, "M", 2; four bytes, from offset 0.
Bytes ModeReport() { return Report({0x51, 4, 0, 0, 0, 0, 0, 0, 0, 0x01, 0x0A, 0x4D, 0x02}); }

// The status 0xF1: offset 0, one byte.
Bytes AcceptedReport() { return Report({0x51, 0, 0, 0, 0, 1, 0, 0, 0, 0xF1}); }

class KernelServerTest : public testing::Test {
 protected:
  ~KernelServerTest() override {
    if (service.joinable()) service.join();
  }

  void Serve(const std::vector<Fault>& faults = {}) {
    KeyboardOptions options;
    options.faults = faults;
    keyboard.emplace(options);
    server.emplace(*keyboard, port, false);
    std::string problem;
    ASSERT_TRUE(server->Start(problem));
    service = std::thread([this] { ended = server->Run(); });
  }

  // To the thread that serves; it stays pending until it is obeyed.
  void Signal(int number) { pthread_kill(service.native_handle(), number); }

  void Stop() {
    Signal(SIGTERM);
    service.join();
  }

  void Send(const Bytes& report) {
    EXPECT_EQ(write(port.hosts[port.plugs - 1], report.data(), report.size()), ssize(report));
  }

  // Empty when the keyboard was unplugged.
  Bytes Receive() {
    Bytes report(100);
    const ssize_t size = read(port.hosts[port.plugs - 1], report.data(), report.size());
    report.resize(size > 0 ? static_cast<size_t>(size) : 0);
    return report;
  }

  void WaitForPlugs(size_t count) {
    while (port.plugs < count) std::this_thread::yield();
  }

  SocketPort port;
  std::optional<Keyboard> keyboard;
  std::optional<KernelServer> server;
  std::thread service;
  bool ended = false;
};

TEST_F(KernelServerTest, ReportsGoInAndTheAnswersComeOut) {
  Serve();
  Send(ModeReport());
  EXPECT_EQ(Receive(), AcceptedReport());
  Stop();
  EXPECT_TRUE(ended);
}

TEST_F(KernelServerTest, AKeyboardThatTheKernelRefusesDoesNotStart) {
  port.refuses = true;
  Keyboard unused;
  KernelServer refused(unused, port, false);
  std::string problem;
  EXPECT_FALSE(refused.Start(problem));
  EXPECT_EQ(problem, "refused");
}

TEST_F(KernelServerTest, AFaultUnplugsBehindTheLastAnswer) {
  Serve({{.kind = FaultKind::kRemoveAfter, .index = 1}});
  Send(ModeReport());
  EXPECT_EQ(Receive(), AcceptedReport());
  EXPECT_EQ(Receive(), Bytes());
  Stop();
}

TEST_F(KernelServerTest, AFaultUnplugsBeforeTheAnswer) {
  Serve({{.kind = FaultKind::kRemoveAt, .index = 1}});
  Send(ModeReport());
  EXPECT_EQ(Receive(), Bytes());
  Stop();
}

TEST_F(KernelServerTest, SignalsUnplugAndPlugInAgain) {
  Serve();
  Signal(SIGUSR1);
  EXPECT_EQ(Receive(), Bytes());
  Signal(SIGUSR2);
  WaitForPlugs(2);
  Send(ModeReport());
  EXPECT_EQ(Receive(), AcceptedReport());
  Stop();
}

}  // namespace
}  // namespace hollin::simulator
