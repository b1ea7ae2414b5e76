// SPDX-License-Identifier: MIT
#include "tests/package/failing_system.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <new>

namespace hollin {
namespace {

void* Allocate(size_t size) {
  FailingSystem& system = System();
  const bool isDue = system.failingAllocation > 0 && --system.failingAllocation == 0;
  if (isDue || size > system.allocationLimit) {
    system.allocationsFailed++;
    return nullptr;
  }
  return std::malloc(size == 0 ? 1 : size);
}

void* AllocateOrThrow(size_t size) {
  void* const memory = Allocate(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

}  // namespace

FailingSystem& System() {
  static FailingSystem system;  // needs no memory of its own
  return system;
}

}  // namespace hollin

void* operator new(size_t size) { return hollin::AllocateOrThrow(size); }
void* operator new[](size_t size) { return hollin::AllocateOrThrow(size); }
void* operator new(size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return hollin::Allocate(size);
}
void* operator new[](size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return hollin::Allocate(size);
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, size_t /*size*/) noexcept { std::free(memory); }
void operator delete[](void* memory, size_t /*size*/) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept { std::free(memory); }
void operator delete[](void* memory, const std::nothrow_t& /*tag*/) noexcept { std::free(memory); }

int fstat(int file, struct stat* status) noexcept {
  if (hollin::System().isFstatFailing) {
    errno = EIO;
    return -1;
  }
  const int result = fstatat(file, "", status, AT_EMPTY_PATH);
  status->st_size += hollin::System().claimedBytes;
  if (hollin::System().isFileOfStranger) status->st_uid++;
  return result;
}
