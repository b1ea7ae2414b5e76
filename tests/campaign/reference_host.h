// SPDX-License-Identifier: MIT
// The host's side of an update, told a second time from the tables of docs/protocol.md alone: slow,
// plain, and without a line of the program's own link, packets or updaters. What the program does
// is held against what this host does with the same keyboard.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <set>
#include <span>
#include <variant>
#include <vector>

#include "base/bytes.h"

namespace hollin::campaign {

// What a host needs of the world. Reports have 64 bytes.
class ReferenceLink {
 public:
  ReferenceLink() = default;
  ReferenceLink(const ReferenceLink&) = delete;
  ReferenceLink& operator=(const ReferenceLink&) = delete;
  virtual ~ReferenceLink() = default;

  virtual bool Open() = 0;  // false unless there is exactly one keyboard and it can be opened
  virtual void Close() = 0;
  virtual bool Write(ByteView report) = 0;
  virtual int Read(std::span<uint8_t> report) = 0;  // the bytes that came, -1 for none ever
  virtual void Pause(std::chrono::milliseconds length) = 0;
};

struct ReferenceA1 {
  uint8_t mode = 2;
  uint32_t chipSize = 0;
  uint32_t startAddress = 0;
  uint32_t blockLength = 0;
  Bytes image = {};
};

struct ReferenceCycle {
  uint32_t address = 0;
  uint32_t data = 0;
};

struct ReferenceA2 {
  uint8_t mode = 1;
  std::vector<uint32_t> sectors;  // where they begin, in words; at least two
  std::set<uint32_t> reserved = {};
  uint32_t blockWords = 4096;
  uint32_t fileOffset = 0;  // words of the image to leave out
  uint32_t mostEraseTime = 2000;
  uint16_t erasedWord = 0xFFFF;
  std::vector<ReferenceCycle> erase = {};
  std::vector<ReferenceCycle> program = {};
  bool usesWriteBuffer = false;
  Bytes writeBufferParameters = {};  // count, PA1, PA2, SA1, SA2
  std::vector<ReferenceCycle> writeBuffer = {};
  Bytes programBufferParameters = {};  // SA1, SA2
  std::vector<ReferenceCycle> programBuffer = {};
  Bytes image = {};
};

struct ReferenceC1 {
  uint8_t mode = 3;
  uint8_t spi = 0, chipSelect = 0, lines = 1;
  uint32_t sectorSize = 65536;
  std::set<uint32_t> reserved = {};
  Bytes image = {};
};

using ReferencePack = std::variant<ReferenceA1, ReferenceA2, ReferenceC1>;

// One piece of an image and the place in the chip that it goes to, all in bytes from the chip's
// start. Nothing but the places may change.
struct ReferenceWrite {
  uint64_t place = 0;
  uint64_t placeSize = 0;  // what is erased for it
  Bytes data;
};
std::vector<ReferenceWrite> WritesOf(const ReferenceA1& pack);
std::vector<ReferenceWrite> WritesOf(const ReferenceA2& pack, uint32_t chipStart);
std::vector<ReferenceWrite> WritesOf(const ReferenceC1& pack);

class ReferenceHost {
 public:
  // The link is lent.
  explicit ReferenceHost(ReferenceLink& link) : link(link) {}

  // One update, from the first mode command to the end command. True when every step succeeded.
  bool Update(const std::vector<ReferencePack>& packs);

  // One reply of at most so many bytes; none when nothing of it could be taken.
  std::optional<Bytes> Receive(size_t capacity);

 private:
  bool Steps(const ReferenceA1& pack);
  bool Steps(const ReferenceA2& pack);
  bool Steps(const ReferenceC1& pack);
  bool Done(bool succeeded);  // a step ended
  void End(bool succeeded);

  bool Mode(uint8_t mode, int& attempts);
  bool Verify(uint32_t address, uint32_t length, uint32_t sum);
  bool Block(const Bytes& header, size_t compared, const Bytes& data, size_t messageSize,
             const Bytes& statuses);
  bool Erase(const ReferenceA2& pack, uint32_t sector, int& reErases);
  bool Program(const ReferenceA2& pack, const ReferenceWrite& write, uint32_t sector);
  bool SendUntilEchoed(const Bytes& command, int resends);
  bool Configure(const ReferenceC1& pack, int attempts);
  bool Erase(uint32_t address);
  bool Program(const ReferenceWrite& write);

  bool Open();
  bool Send(const Bytes& message);
  bool Ask(const Bytes& command, const Bytes& reply, size_t compared);
  bool Ask(const Bytes& command, const Bytes& reply) { return Ask(command, reply, reply.size()); }
  bool Await(uint8_t status);

  ReferenceLink& link;
  bool isOpen = false;
  std::array<uint8_t, 64> buffer{};  // of both directions
};

}  // namespace hollin::campaign
