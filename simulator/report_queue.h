// SPDX-License-Identifier: MIT
// What one open of a keyboard has not read yet. As in the kernel, there is an end to it: the newest
// reports are dropped, and nobody is told.
#pragma once

#include <cstddef>
#include <deque>
#include <utility>

#include "simulator/keyboard.h"

namespace hollin::simulator {

class ReportQueue {
 public:
  static constexpr size_t kCapacity = 63;

  void Add(const Deliveries& deliveries) {
    for (const Delivery& delivery : deliveries) {
      if (queue.size() < kCapacity) queue.push_back(delivery);
    }
  }
  [[nodiscard]] bool IsEmpty() const { return queue.empty(); }
  void Clear() { queue.clear(); }

  // The oldest; wants one that is there.
  [[nodiscard]] Delivery Take() {
    Delivery oldest = std::move(queue.front());
    queue.pop_front();
    return oldest;
  }

 private:
  std::deque<Delivery> queue;
};

}  // namespace hollin::simulator
