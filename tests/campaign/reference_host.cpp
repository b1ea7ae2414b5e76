// SPDX-License-Identifier: MIT
#include "tests/campaign/reference_host.h"

#include <algorithm>

namespace hollin::campaign {
namespace {

using std::chrono::milliseconds;

constexpr int kAttempts = 5;
constexpr int kSectorAttempts = 6;

// A number of so many bytes, the lowest first.
Bytes Number(uint64_t value, size_t size) {
  Bytes bytes;
  for (size_t i = 0; i < size; i++) bytes.push_back(static_cast<uint8_t>(value >> (8 * i)));
  return bytes;
}

uint32_t NumberAt(ByteView bytes, size_t offset, size_t size) {
  uint32_t value = 0;
  for (size_t i = 0; i < size; i++) value |= uint32_t{bytes[offset + i]} << (8 * i);
  return value;
}

Bytes Join(std::initializer_list<Bytes> parts) {
  Bytes all;
  for (const Bytes& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

uint32_t SumOfBytes(const Bytes& bytes) {
  uint32_t sum = 0;
  for (const uint8_t byte : bytes) sum += byte;
  return sum;
}

// A last byte that is no word counts for nothing.
uint32_t SumOfWords(const Bytes& bytes) {
  uint32_t sum = 0;
  for (size_t i = 0; i + 1 < bytes.size(); i += 2) sum += NumberAt(bytes, i, 2);
  return sum;
}

Bytes Part(const Bytes& bytes, uint64_t begin, uint64_t length) {
  const auto first = bytes.begin() + static_cast<long>(begin);
  return {first, first + static_cast<long>(length)};
}

Bytes CycleCommand(uint8_t code, const Bytes& parameters,
                   const std::vector<ReferenceCycle>& cycles) {
  Bytes command = Join({{code, static_cast<uint8_t>(cycles.size() * 2)}, parameters});
  for (const ReferenceCycle& cycle : cycles) {
    command = Join({command, Number(cycle.address, 2), Number(cycle.data, 2)});
  }
  return command;
}

uint64_t SectorBytes(const std::vector<uint32_t>& sectors, size_t index) {
  const size_t first = std::min(index, sectors.size() - 2);
  return (uint64_t{sectors[first + 1]} - sectors[first]) * 2;
}

}  // namespace

std::vector<ReferenceWrite> WritesOf(const ReferenceA1& pack) {
  std::vector<ReferenceWrite> writes;
  for (uint64_t begin = 0; begin < pack.image.size(); begin += pack.blockLength) {
    const uint64_t length = std::min<uint64_t>(pack.blockLength, pack.image.size() - begin);
    writes.push_back({pack.startAddress + begin, length, Part(pack.image, begin, length)});
  }
  return writes;
}

// Reserved sectors are among them, with nothing to write.
std::vector<ReferenceWrite> WritesOf(const ReferenceA2& pack, uint32_t chipStart) {
  std::vector<ReferenceWrite> writes;
  const uint64_t skipped = uint64_t{pack.fileOffset} * 2;
  const uint64_t all = pack.image.size() - skipped;
  uint64_t begin = 0;
  for (size_t i = 0; i < pack.sectors.size() && (i == 0 || begin < all); i++) {
    const uint64_t size = SectorBytes(pack.sectors, i);
    const bool isReserved = pack.reserved.contains(pack.sectors[i]);
    const uint64_t length = isReserved ? 0 : std::min(size, all - begin);
    writes.push_back({(uint64_t{pack.sectors[i]} - chipStart) * 2, isReserved ? 0 : size,
                      Part(pack.image, skipped + begin, length)});
    begin += size;
  }
  return writes;
}

std::vector<ReferenceWrite> WritesOf(const ReferenceC1& pack) {
  std::vector<ReferenceWrite> writes;
  uint64_t begin = 0;
  for (uint32_t address = 0; begin < pack.image.size(); address += pack.sectorSize) {
    if (pack.reserved.contains(address)) continue;
    const uint64_t length = std::min<uint64_t>(pack.sectorSize, pack.image.size() - begin);
    writes.push_back({address, pack.sectorSize, Part(pack.image, begin, length)});
    begin += length;
  }
  return writes;
}

bool ReferenceHost::Update(const std::vector<ReferencePack>& packs) {
  bool succeeded = true;
  for (const ReferencePack& pack : packs) {
    succeeded = succeeded && std::visit([this](const auto& each) { return Steps(each); }, pack);
  }
  End(succeeded);
  return succeeded;
}

bool ReferenceHost::Done(bool succeeded) {
  if (succeeded) link.Pause(milliseconds(500));
  return succeeded;
}

// Sent to a keyboard that has to be found again, if the link is closed.
void ReferenceHost::End(bool succeeded) {
  if (!Open()) return;
  const Bytes command = {0x09, static_cast<uint8_t>(succeeded ? 0 : 1), 0, 0};
  Ask(command, command);
  link.Close();
  isOpen = false;
}

bool ReferenceHost::Steps(const ReferenceA1& pack) {
  int attempts = kAttempts;
  if (!Done(Open() && Mode(pack.mode, attempts))) return false;
  uint32_t address = 0;
  for (const ReferenceWrite& write : WritesOf(pack)) {
    const Bytes header = Join({{0x07},
                               Number(address, 4),
                               Number(write.data.size(), 2),
                               Number(SumOfBytes(write.data), 2),
                               {0, 0, 0}});
    if (!Done(Block(header, 12, write.data, 64, {0xF4, 0xD4}))) return false;
    address += static_cast<uint32_t>(write.data.size());
  }
  return Done(Verify(pack.startAddress, address, SumOfBytes(pack.image)));
}

bool ReferenceHost::Steps(const ReferenceA2& pack) {
  int attempts = kAttempts;
  if (!Done(Open() && Mode(pack.mode, attempts))) return false;
  const std::vector<ReferenceWrite> writes = WritesOf(pack, 0);
  for (size_t i = 0; i < writes.size(); i++) {
    bool isWritten = writes[i].placeSize == 0;
    for (int attempt = 0; attempt < kSectorAttempts && !isWritten; attempt++) {
      int reErases = 0;
      if (!Erase(pack, pack.sectors[i], reErases)) return false;
      isWritten = Program(pack, writes[i], pack.sectors[i]);
    }
    if (!Done(isWritten)) return false;
  }
  for (size_t i = 0; i < writes.size(); i++) {
    if (writes[i].placeSize == 0) continue;
    const auto words = static_cast<uint32_t>(writes[i].data.size() / 2);
    if (!Verify(pack.sectors[i], words, SumOfWords(writes[i].data))) return false;
  }
  return Done(true);
}

bool ReferenceHost::Steps(const ReferenceC1& pack) {
  int attempts = kAttempts;
  if (!Done(Open() && Mode(pack.mode, attempts) && Configure(pack, attempts))) return false;
  const std::vector<ReferenceWrite> writes = WritesOf(pack);
  for (const ReferenceWrite& write : writes) {
    bool isWritten = false;
    for (int attempt = 0; attempt < kSectorAttempts && !isWritten; attempt++) {
      if (!Erase(static_cast<uint32_t>(write.place))) return false;
      isWritten = Program(write);
    }
    if (!Done(isWritten)) return false;
  }
  return Done(std::all_of(writes.begin(), writes.end(), [this](const ReferenceWrite& write) {
    return Verify(static_cast<uint32_t>(write.place), static_cast<uint32_t>(write.data.size()),
                  SumOfBytes(write.data));
  }));
}

// `attempts` is what the configure command has left, one at least.
bool ReferenceHost::Mode(uint8_t mode, int& attempts) {
  for (int asked = 0; asked < kAttempts; asked++) {
    if (Ask({0x01, 0x0A, 0x4D, mode}, {0xF1})) return true;
    attempts = std::max(attempts - 1, 1);
  }
  return false;
}

bool ReferenceHost::Verify(uint32_t address, uint32_t length, uint32_t sum) {
  const Bytes range = Join({{0x08}, Number(address, 4), Number(length, 4)});
  return Ask(Join({range, {0}}), Join({range, Number(sum, 2)}));
}

bool ReferenceHost::Block(const Bytes& header, size_t compared, const Bytes& data,
                          size_t messageSize, const Bytes& statuses) {
  if (!Ask(header, header, compared)) return false;
  for (size_t begin = 0; begin < data.size(); begin += messageSize) {
    if (!Send(Part(data, begin, std::min(messageSize, data.size() - begin)))) return false;
  }
  return std::all_of(statuses.begin(), statuses.end(),
                     [this](uint8_t status) { return Await(status); });
}

bool ReferenceHost::Erase(const ReferenceA2& pack, uint32_t sector, int& reErases) {
  const uint32_t base = pack.sectors[0] == 0x1400 ? 0 : sector;
  for (size_t i = 0; i < pack.erase.size(); i++) {
    const bool isLast = i + 1 == pack.erase.size();
    const uint32_t address = isLast ? sector : pack.erase[i].address + base;
    const Bytes cycle = Join({{0x02}, Number(address, 4), Number(pack.erase[i].data, 2)});
    if (!Ask(cycle, cycle)) return false;
  }
  const Bytes poll = Join({{0x03}, Number(sector, 4)});
  int matches = 0;
  for (uint64_t elapsed = 0;;) {
    if (!Send(poll)) return false;
    const int pause = elapsed == 0 ? 700 : 20;
    link.Pause(milliseconds(pause));
    const std::optional<Bytes> reply = Receive(7);
    if (!reply) return false;
    const bool isErased = reply->size() == 7 && NumberAt(*reply, 5, 2) == pack.erasedWord;
    matches = isErased ? matches + 1 : 0;
    if (matches == 2) return true;
    elapsed += static_cast<uint64_t>(pause);
    if (elapsed <= pack.mostEraseTime) continue;
    if (reErases == 5) return false;
    reErases++;
    Erase(pack, sector, reErases);
  }
}

bool ReferenceHost::Program(const ReferenceA2& pack, const ReferenceWrite& write, uint32_t sector) {
  if (pack.usesWriteBuffer) {
    if (!SendUntilEchoed(CycleCommand(0x05, pack.writeBufferParameters, pack.writeBuffer), 5) ||
        !SendUntilEchoed(CycleCommand(0x06, pack.programBufferParameters, pack.programBuffer), 5)) {
      return false;
    }
  } else if (!SendUntilEchoed(CycleCommand(0x04, {}, pack.program), 10)) {
    return false;
  }
  const uint64_t words = write.data.size() / 2;
  for (uint64_t begin = 0; begin < words; begin += pack.blockWords) {
    const uint64_t count = std::min<uint64_t>(pack.blockWords, words - begin);
    const Bytes data = Part(write.data, begin * 2, count * 2);
    const Bytes header = Join({{0x07},
                               Number(sector + begin, 4),
                               Number(count, 2),
                               Number(SumOfWords(data), 2),
                               {0, 0, 0}});
    if (!Block(header, 9, data, data.size(), {0xF4, 0xD4})) return false;
  }
  return true;
}

// Only another echo is answered by sending again, not a reply that does not come.
bool ReferenceHost::SendUntilEchoed(const Bytes& command, int resends) {
  for (int sent = 0; sent <= resends; sent++) {
    if (!Send(command)) return false;
    const std::optional<Bytes> reply = Receive(command.size());
    if (!reply) return false;
    if (*reply == command) return true;
  }
  return false;
}

bool ReferenceHost::Configure(const ReferenceC1& pack, int attempts) {
  const Bytes command =
      Join({{0x0B, pack.spi, pack.chipSelect, pack.lines}, Number(pack.sectorSize, 3)});
  for (; attempts > 0; attempts--) {
    if (!Send(command)) continue;
    std::optional<Bytes> reply = Receive(5);
    if (!reply || (*reply)[0] != 0xF1) continue;
    if (reply->size() < 5) return false;  // a capacity that did not come whole is none
    const std::vector<ReferenceWrite> writes = WritesOf(pack);
    const auto capacity = static_cast<int32_t>(NumberAt(*reply, 1, 4));
    const uint64_t span = writes.back().place + writes.back().placeSize;
    return capacity > 0 && static_cast<uint64_t>(capacity) >= span;
  }
  return false;
}

bool ReferenceHost::Erase(uint32_t address) {
  const Bytes command = Join({{0x02}, Number(address, 4)});
  if (!Ask(command, command)) return false;
  for (int poll = 1; poll <= 106; poll++) {
    if (!Send(Join({{0x03}, Number(address, 4)}))) return false;
    link.Pause(milliseconds(20));
    const std::optional<Bytes> reply = Receive(7);
    if (!reply) return false;
    if (reply->size() == 7 && NumberAt(*reply, 5, 2) == 0xFFFF) return true;
  }
  return false;
}

bool ReferenceHost::Program(const ReferenceWrite& write) {
  for (size_t begin = 0; begin < write.data.size(); begin += 8192) {
    const Bytes data = Part(write.data, begin, std::min<size_t>(8192, write.data.size() - begin));
    const Bytes header = Join({{0x07},
                               Number(write.place + begin, 4),
                               Number(data.size(), 4),
                               Number(SumOfBytes(data), 2),
                               {0}});
    if (!Block(header, 11, data, data.size(), {0xF4})) return false;
  }
  return true;
}

bool ReferenceHost::Open() {
  isOpen = isOpen || link.Open();
  return isOpen;
}

// To the keyboard: 0x51, total (4), offset (4), payload; what stands behind it is what was there.
bool ReferenceHost::Send(const Bytes& message) {
  for (size_t offset = 0; offset < message.size(); offset += 55) {
    const size_t size = std::min<size_t>(55, message.size() - offset);
    const Bytes report =
        Join({{0x51}, Number(message.size(), 4), Number(offset, 4), Part(message, offset, size)});
    std::copy(report.begin(), report.end(), buffer.begin());
    if (!link.Write(buffer)) return false;
  }
  return !message.empty();
}

// From the keyboard: any byte, offset (4), total (4), payload. What was taken when the reply broke
// off is the reply; nothing when that is nothing.
std::optional<Bytes> ReferenceHost::Receive(size_t capacity) {
  Bytes reply;
  const auto broken = [&reply]() -> std::optional<Bytes> {
    return reply.empty() ? std::nullopt : std::optional(reply);
  };
  while (true) {
    const int size = link.Read(buffer);
    if (size < 0) return std::nullopt;
    if (size < 9) return broken();
    const int64_t offset = NumberAt(buffer, 1, 4);
    const int64_t total = static_cast<int32_t>(NumberAt(buffer, 5, 4));
    const auto taken = static_cast<int64_t>(reply.size());
    if (offset != taken || total < offset) return broken();
    const int64_t payload = std::min<int64_t>(total - taken, 55);
    if (taken + payload > static_cast<int64_t>(capacity) || size < 9 + payload) return broken();
    reply.insert(reply.end(), buffer.begin() + 9, buffer.begin() + 9 + payload);
    if (taken + payload == total) return broken();
  }
}

// Every byte that did not come counts as another than the expected one.
bool ReferenceHost::Ask(const Bytes& command, const Bytes& reply, size_t compared) {
  if (!Send(command)) return false;
  const std::optional<Bytes> got = Receive(reply.size());
  return got && got->size() >= compared &&
         std::equal(reply.begin(), reply.begin() + static_cast<long>(compared), got->begin());
}

bool ReferenceHost::Await(uint8_t status) {
  const std::optional<Bytes> got = Receive(1);
  return got && (*got)[0] == status;
}

}  // namespace hollin::campaign
