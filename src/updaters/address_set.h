// SPDX-License-Identifier: MIT
// The flash addresses of reserved sectors, for look-ups that stay cheap however long a
// description's list is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace hollin {

class AddressSet {
 public:
  AddressSet() = default;
  // Order and duplicates of `list` say nothing, and duplicates take no room.
  explicit AddressSet(const std::vector<uint32_t>& list);

  // Asked in ascending order, as a walk over sectors does, it steps along the list; any other
  // address is searched for.
  [[nodiscard]] bool Contains(uint32_t address) const;
  // The number of distinct addresses.
  [[nodiscard]] size_t Size() const { return addresses.size(); }

 private:
  void SortOut();
  // Whether all entries before `at` are smaller than the address, and none from there on.
  [[nodiscard]] bool BelongsAt(size_t at, uint32_t address) const;
  [[nodiscard]] size_t Find(uint32_t address) const;

  std::vector<uint32_t> addresses;  // ascending
  mutable size_t place = 0;         // of the address last asked for; one thread at a time
};

}  // namespace hollin
