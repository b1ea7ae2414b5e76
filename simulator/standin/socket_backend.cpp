// SPDX-License-Identifier: MIT
#include "simulator/standin/socket_backend.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <utility>

#include "simulator/socket_file.h"
#include "simulator/standin/call_log.h"

namespace hollin::simulator {
namespace {

std::string Directory() {
  const char* directory = std::getenv(kDirectoryVariable);
  return directory == nullptr ? "" : directory;
}

// A socket that is closed with its owner.
class Socket {
 public:
  explicit Socket(int file) : file(file) {}
  Socket(Socket&& other) noexcept : file(std::exchange(other.file, -1)) {}
  Socket& operator=(Socket&&) = delete;
  ~Socket() {
    if (file >= 0) close(file);
  }
  [[nodiscard]] int File() const { return file; }

 private:
  int file;
};

// Sends a packet, with a descriptor if there is one, and awaits the answer. Signals do not end it.
bool Ask(int connection, std::span<const uint8_t> packet, int passed = -1) {
  iovec bytes{const_cast<uint8_t*>(packet.data()), packet.size()};
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))]{};
  msghdr message{};
  message.msg_iov = &bytes;
  message.msg_iovlen = 1;
  if (passed >= 0) {
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    cmsghdr* header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof(int));
    std::memcpy(CMSG_DATA(header), &passed, sizeof passed);
  }
  ssize_t result;
  do result = sendmsg(connection, &message, MSG_NOSIGNAL);
  while (result < 0 && errno == EINTR);
  if (result < 0) return false;
  uint8_t answer = kNo;
  do result = recv(connection, &answer, 1, 0);
  while (result < 0 && errno == EINTR);
  return result == 1 && answer == kYes;
}

class Connection;
// Never destroyed: a worker may still pause while the process exits.
std::mutex& ConnectionsMutex() {
  static auto& mutex = *new std::mutex;
  return mutex;
}
std::vector<Connection*>& Connections() {
  static auto& connections = *new std::vector<Connection*>;
  return connections;
}

class Connection : public OpenedKeyboard {
 public:
  Connection(Socket commands, Socket reports)
      : commands(std::move(commands)), reports(std::move(reports)) {
    const std::lock_guard lock(ConnectionsMutex());
    Connections().push_back(this);
  }

  ~Connection() override {
    const std::lock_guard lock(ConnectionsMutex());
    std::erase(Connections(), this);
  }

  bool Write(std::span<const uint8_t> report) override {
    std::vector<uint8_t> packet{kReport};
    packet.insert(packet.end(), report.begin(), report.end());
    const std::lock_guard lock(asking);
    return Ask(commands.File(), packet);
  }

  int Read(std::span<uint8_t> report, int milliseconds) override {
    if (milliseconds != kForEver) {
      pollfd waiting{reports.File(), POLLIN, 0};
      const int ready = poll(&waiting, 1, milliseconds);
      if (ready <= 0) return ready;
    }
    uint8_t packet[kLongestPacket];
    const ssize_t size = recv(reports.File(), packet, sizeof packet, 0);
    if (size <= 0 || packet[0] != kReport) return -1;
    const size_t count = std::min(report.size(), static_cast<size_t>(size - 1));
    std::copy_n(packet + 1, count, report.begin());
    return static_cast<int>(count);
  }

  void Skip(std::chrono::nanoseconds length) {
    std::vector<uint8_t> packet{kTime};
    const auto count = static_cast<uint64_t>(length.count());
    for (int i = 0; i < 8; i++) packet.push_back(static_cast<uint8_t>(count >> (8 * i)));
    const std::lock_guard lock(asking);
    Ask(commands.File(), packet);
  }

 private:
  Socket commands;
  Socket reports;
  std::mutex asking;
};

}  // namespace

HidBackend& TheBackend() {
  static auto& backend = *new SocketBackend;
  return backend;
}

std::vector<ListedKeyboard> SocketBackend::List() {
  std::vector<ListedKeyboard> listed;
  const std::string directory = Directory();
  if (directory.empty()) return listed;
  for (const SocketFile& file : ListSockets(directory)) {
    // A simulator that was killed leaves its name behind; only a living one listens.
    const Socket probe(ConnectTo(directory, file));
    if (probe.File() < 0) continue;
    listed.push_back({file.vendorId, file.productId, directory + "/" + SocketName(file)});
  }
  return listed;
}

std::unique_ptr<OpenedKeyboard> SocketBackend::Open(const std::string& path) {
  const size_t slash = path.rfind('/');
  const auto file = ParseSocketName(std::string_view(path).substr(slash + 1));
  if (!file) return nullptr;
  Socket commands(ConnectTo(path.substr(0, slash), *file));
  int pair[2];
  if (commands.File() < 0) return nullptr;
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, pair) != 0) return nullptr;
  Socket reports(pair[0]);
  const Socket passed(pair[1]);
  if (!Ask(commands.File(), std::vector<uint8_t>{kOpen}, passed.File())) return nullptr;
  return std::make_unique<Connection>(std::move(commands), std::move(reports));
}

bool SocketBackend::RecordsCalls() const { return LogWanted(); }

void SocketBackend::Record(const std::string& call) { LogLine(call); }

void TellSkippedTime(std::chrono::nanoseconds length) {
  const std::lock_guard lock(ConnectionsMutex());
  for (Connection* connection : Connections()) connection->Skip(length);
}

}  // namespace hollin::simulator
