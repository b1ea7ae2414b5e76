// SPDX-License-Identifier: MIT
// The flash addresses of reserved sectors, for look-ups that stay cheap however long a
// description's list is.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

namespace hollin {

class AddressSet {
 public:
  AddressSet() = default;
  // Order and duplicates of `list` say nothing, and duplicates take no room.
  explicit AddressSet(const std::vector<uint32_t>& list) {
    size_t most = kFewAddresses;
    for (const uint32_t address : list) {
      addresses.push_back(address);
      if (addresses.size() < most) continue;
      SortOut();
      most = std::max(most, 2 * addresses.size());
    }
    SortOut();
  }

  // Asked in ascending order, as a walk over sectors does, it steps along the list; any other
  // address is searched for.
  [[nodiscard]] bool Contains(uint32_t address) const {
    if (!BelongsAt(place, address)) {
      place = BelongsAt(place + 1, address) ? place + 1 : Find(address);
    }
    return place < addresses.size() && addresses[place] == address;
  }
  // The number of distinct addresses.
  [[nodiscard]] size_t Size() const { return addresses.size(); }

 private:
  static constexpr size_t kFewAddresses = 4096;

  void SortOut() {
    if (!std::is_sorted(addresses.begin(), addresses.end())) {
      std::sort(addresses.begin(), addresses.end());
    }
    addresses.erase(std::unique(addresses.begin(), addresses.end()), addresses.end());
  }

  // Whether all entries before `at` are smaller than the address, and none from there on.
  [[nodiscard]] bool BelongsAt(size_t at, uint32_t address) const {
    if (at > addresses.size() || (at > 0 && addresses[at - 1] >= address)) return false;
    return at == addresses.size() || addresses[at] >= address;
  }
  [[nodiscard]] size_t Find(uint32_t address) const {
    const auto found = std::lower_bound(addresses.begin(), addresses.end(), address);
    return static_cast<size_t>(found - addresses.begin());
  }

  std::vector<uint32_t> addresses;  // ascending
  mutable size_t place = 0;         // of the address last asked for; one thread at a time
};

}  // namespace hollin
