// SPDX-License-Identifier: MIT
#include "updaters/address_set.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

namespace hollin {
namespace {

constexpr size_t kFewAddresses = 4096;  // as many as are gathered at least before they are sorted
constexpr size_t kGrowth = 8;           // so often as many as there were are gathered next
constexpr size_t kRecent = 4096;        // a power of two
constexpr size_t kQuicklySorted = 1000;

// By the lowest byte, then by each higher one, which leaves what is equal in its order: in time
// that grows with the number of addresses alone, in whatever order a package has them. The even
// number of passes ends in the memory it began in, which may have more room.
void SortByBytes(std::vector<uint32_t>& addresses) {
  std::vector<uint32_t> others(addresses.size());
  for (const int shift : {0, 8, 16, 24}) {
    std::array<size_t, 257> places{};
    for (const uint32_t address : addresses) places[(address >> shift & 0xFF) + 1]++;
    std::partial_sum(places.begin(), places.end(), places.begin());
    for (const uint32_t address : addresses) others[places[address >> shift & 0xFF]++] = address;
    addresses.swap(others);
  }
}

void Sort(std::vector<uint32_t>& addresses) {
  if (addresses.size() > kQuicklySorted) return SortByBytes(addresses);
  std::sort(addresses.begin(), addresses.end());
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
  if (!std::is_sorted(addresses.begin(), addresses.end())) Sort(addresses);
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
