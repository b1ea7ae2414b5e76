// SPDX-License-Identifier: MIT
#include "simulator/socket_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <tuple>

namespace hollin::simulator {
namespace {

using SocketFunction = int (*)(int, const sockaddr*, socklen_t);

// Calls bind or connect. The folder is named by a descriptor, for a socket's address has room for
// 107 bytes only.
int SocketAt(const std::string& directory, const SocketFile& file, SocketFunction attach) {
  const int folder = open(directory.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
  if (folder < 0) return -1;
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::snprintf(address.sun_path, sizeof address.sun_path, "/proc/self/fd/%d/%s", folder,
                SocketName(file).c_str());
  int socketFile = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
  if (attach(socketFile, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    close(socketFile);
    socketFile = -1;
  }
  close(folder);
  return socketFile;
}

}  // namespace

std::string SocketName(const SocketFile& file) {
  char name[64];
  std::snprintf(name, sizeof name, "ts30-%04x-%04x-%d.socket", file.vendorId, file.productId,
                file.process);
  return name;
}

std::optional<SocketFile> ParseSocketName(std::string_view name) {
  unsigned vendorId = 0;
  unsigned productId = 0;
  int process = 0;
  const std::string text(name);
  if (std::sscanf(text.c_str(), "ts30-%4x-%4x-%9d", &vendorId, &productId, &process) != 3) {
    return std::nullopt;
  }
  const SocketFile file{static_cast<uint16_t>(vendorId), static_cast<uint16_t>(productId), process};
  if (SocketName(file) != name) return std::nullopt;
  return file;
}

std::vector<SocketFile> ListSockets(const std::string& directory) {
  std::vector<SocketFile> files;
  DIR* folder = opendir(directory.c_str());
  if (folder == nullptr) return files;
  while (const dirent* entry = readdir(folder)) {
    if (const auto file = ParseSocketName(entry->d_name)) files.push_back(*file);
  }
  closedir(folder);
  std::ranges::sort(files, {}, [](const SocketFile& file) {
    return std::tuple(file.process, file.vendorId, file.productId);
  });
  return files;
}

int ListenAt(const std::string& directory, const SocketFile& file) {
  const int socketFile = SocketAt(directory, file, bind);
  if (socketFile >= 0) listen(socketFile, SOMAXCONN);
  return socketFile;
}

int ConnectTo(const std::string& directory, const SocketFile& file) {
  return SocketAt(directory, file, connect);
}

}  // namespace hollin::simulator
