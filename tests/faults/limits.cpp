// SPDX-License-Identifier: MIT
#include "tests/faults/limits.h"

#include <sys/resource.h>
#include <unistd.h>

#include <fstream>
#include <stdexcept>

#include "tests/faults/system_faults.h"

namespace hollin::faults {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kHasSanitizer = true;
#elif defined(__has_feature)
constexpr bool kHasSanitizer = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool kHasSanitizer = false;
#endif

void Limit(__rlimit_resource resource, size_t size) {
  const rlimit limit = {size, size};
  if (setrlimit(resource, &limit) != 0) throw std::runtime_error("cannot limit");
}

size_t MemoryInUse() {
  size_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  return pages * static_cast<size_t>(sysconf(_SC_PAGESIZE));
}

}  // namespace

void LimitFileSize(size_t size) { Limit(RLIMIT_FSIZE, size); }

void LimitMemory(size_t more) {
  if (!kHasSanitizer) return Limit(RLIMIT_AS, MemoryInUse() + more);
  Faults().largestAllocation = more + 1;
  Arm();
}

}  // namespace hollin::faults
