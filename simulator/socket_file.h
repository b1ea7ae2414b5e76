// SPDX-License-Identifier: MIT
// Where a simulated keyboard is found and how it is spoken to: a folder holds one local socket per
// plugged-in keyboard, whose name tells the ids and the process, "ts30-1c3e-2b91-1234.socket".
//
// A program opens the keyboard by connecting and sending kOpen together with one end of a socket
// pair. On the connection every packet begins with one of the letters below and is answered by
// kYes or kNo; through the pair come the keyboard's reports, one packet each, behind a letter.
// When the keyboard goes away, both end.
//
// Compiled into the stand-in for hidapi as well, so it uses nothing of the project.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace hollin::simulator {

inline constexpr char kDirectoryVariable[] = "TS30_SIMULATOR_DIR";

inline constexpr uint8_t kOpen = 'O';
inline constexpr uint8_t kReport = 'R';       // a report follows, in either direction
inline constexpr uint8_t kTime = 'T';         // 8 bytes: nanoseconds that were skipped
inline constexpr uint8_t kReadFailure = 'F';  // the next read fails
inline constexpr uint8_t kYes = 'Y';
inline constexpr uint8_t kNo = 'N';
inline constexpr size_t kLongestPacket = 4096;

struct SocketFile {
  uint16_t vendorId = 0;
  uint16_t productId = 0;
  int process = 0;

  bool operator==(const SocketFile&) const = default;
};

[[nodiscard]] std::string SocketName(const SocketFile& file);
[[nodiscard]] std::optional<SocketFile> ParseSocketName(std::string_view name);

// The names in the folder that are sockets of keyboards, by process; empty when there is none.
[[nodiscard]] std::vector<SocketFile> ListSockets(const std::string& directory);

// A listening socket of that name, or a connection to it; the caller closes it. -1 when it fails:
// nobody listens behind a name that a dead simulator left. Folders may have names of any length.
[[nodiscard]] int ListenAt(const std::string& directory, const SocketFile& file);
[[nodiscard]] int ConnectTo(const std::string& directory, const SocketFile& file);

}  // namespace hollin::simulator
