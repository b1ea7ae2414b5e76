// SPDX-License-Identifier: MIT
#include "updaters/address_set.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <span>
#include <utility>

namespace hollin {
namespace {

constexpr size_t kFewAddresses = 4096;  // as many as are gathered at least before they are sorted
constexpr size_t kGrowth = 8;           // so often as many as there were are gathered next
constexpr size_t kRecent = 4096;        // a power of two
constexpr size_t kQuicklySorted = 100;
constexpr int kTopShift = 24;

size_t PartOf(uint32_t address, int shift) { return address >> shift & 0xFF; }

// By the highest byte, then each part by the next: in place, and in time that grows with the number
// of addresses alone, in whatever order a package has them.
void Sort(std::span<uint32_t> addresses, int shift) {
  if (addresses.size() <= kQuicklySorted) return std::sort(addresses.begin(), addresses.end());
  std::array<size_t, 257> starts{};
  for (const uint32_t address : addresses) starts[PartOf(address, shift) + 1]++;
  std::partial_sum(starts.begin(), starts.end(), starts.begin());
  auto next = starts;
  for (size_t part = 0; part < 256; part++) {
    while (next[part] < starts[part + 1]) {
      uint32_t& address = addresses[next[part]];
      std::swap(address, addresses[next[PartOf(address, shift)]++]);
    }
  }
  if (shift == 0) return;
  for (size_t part = 0; part < 256; part++) {
    Sort(addresses.subspan(starts[part], starts[part + 1] - starts[part]), shift - 8);
  }
}

// Remembers some addresses that were asked for lately: enough to tell most duplicates.
class Recent {
 public:
  explicit Recent(uint32_t first) { places.fill(first); }

  bool IsNew(uint32_t address) {
    uint32_t& place = places[address * 2654435761U >> 20];
    return std::exchange(place, address) != address;
  }

 private:
  std::array<uint32_t, kRecent> places{};
};

}  // namespace

AddressSet::AddressSet(const std::vector<uint32_t>& list) {
  if (list.empty()) return;
  // Room that is not used takes no memory, and addresses that move would be there twice.
  addresses.reserve(list.size());
  addresses.push_back(list.front());
  Recent recent(list.front());
  size_t most = kFewAddresses;
  for (const uint32_t address : list) {
    if (!recent.IsNew(address)) continue;
    addresses.push_back(address);
    if (addresses.size() < most) continue;
    SortOut();
    most = std::max(most, kGrowth * addresses.size());
  }
  SortOut();
}

bool AddressSet::Contains(uint32_t address) const {
  if (!BelongsAt(place, address)) {
    place = BelongsAt(place + 1, address) ? place + 1 : Find(address);
  }
  return place < addresses.size() && addresses[place] == address;
}

void AddressSet::SortOut() {
  if (!std::is_sorted(addresses.begin(), addresses.end())) Sort(addresses, kTopShift);
  addresses.erase(std::unique(addresses.begin(), addresses.end()), addresses.end());
}

bool AddressSet::BelongsAt(size_t at, uint32_t address) const {
  if (at > addresses.size() || (at > 0 && addresses[at - 1] >= address)) return false;
  return at == addresses.size() || addresses[at] >= address;
}

size_t AddressSet::Find(uint32_t address) const {
  const auto found = std::lower_bound(addresses.begin(), addresses.end(), address);
  return static_cast<size_t>(found - addresses.begin());
}

}  // namespace hollin
