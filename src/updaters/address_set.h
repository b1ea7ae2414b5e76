// SPDX-License-Identifier: MIT
// The flash addresses of reserved sectors, for look-ups that stay cheap however long a
// description's list is.
#pragma once

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

namespace hollin {

class AddressSet {
 public:
  AddressSet() = default;
  // Order and duplicates of `list` say nothing.
  explicit AddressSet(std::vector<uint32_t> list) : addresses(std::move(list)) {
    std::sort(addresses.begin(), addresses.end());
    addresses.erase(std::unique(addresses.begin(), addresses.end()), addresses.end());
  }

  [[nodiscard]] bool Contains(uint32_t address) const {
    return std::binary_search(addresses.begin(), addresses.end(), address);
  }
  // The number of distinct addresses.
  [[nodiscard]] size_t Size() const { return addresses.size(); }

 private:
  std::vector<uint32_t> addresses;  // ascending
};

}  // namespace hollin
