// SPDX-License-Identifier: MIT
// What this process holds of the system right now.
#pragma once

#include <malloc.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#if defined(__SANITIZE_ADDRESS__)
// The compiler brings no header for it.
extern "C" size_t __sanitizer_get_current_allocated_bytes();  // NOLINT
#endif

namespace hollin::campaign {

inline size_t CountEntries(const char* folder) {
  return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

inline size_t OpenDescriptors() { return CountEntries("/proc/self/fd"); }

// Without those of Qt's pool, which stay for half a minute.
inline size_t Threads() {
  size_t count = 0;
  for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
    std::ifstream file(thread.path() / "comm");
    std::string name;
    if (std::getline(file, name) && name != "Thread (pooled)") count++;
  }
  return count;
}

// Bytes that were allocated and not freed.
inline size_t AllocatedBytes() {
#if defined(__SANITIZE_ADDRESS__)
  return __sanitizer_get_current_allocated_bytes();
#else
  const struct mallinfo2 state = mallinfo2();
  return state.uordblks + state.hblkhd;
#endif
}

}  // namespace hollin::campaign
