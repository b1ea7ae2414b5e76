// SPDX-License-Identifier: MIT
#include "tests/faults/system_faults.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <hidapi.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace hollin::faults {
namespace {

// Outside the state, since other threads touch them.
std::atomic<bool> isArmed = false;
std::atomic<long> liveAllocations = 0;
thread_local bool isArmedThread = false;
thread_local int uncounted = 0;

bool IsBalanced() { return isArmed && uncounted == 0; }
bool IsCounting() { return isArmedThread && uncounted == 0; }

void Interrupt() {
  const Uncounted scope;
  Faults().interruption();
}

// The failure of the call that is being made now; null when it is to be made as ever.
const Failure* Count(Call call) {
  if (!IsCounting()) return nullptr;
  SystemFaults& faults = Faults();
  if (call != Call::kAllocate && faults.interruptedCall > 0 && --faults.interruptedCall == 0) {
    Interrupt();
  }
  const size_t number = ++faults.counted[static_cast<size_t>(call)];
  if (faults.failure.call != call || faults.failure.index != number) return nullptr;
  faults.hasStruck = true;
  return &faults.failure;
}

int FailWith(int error) {
  errno = error;
  return -1;
}

// A call without a number of bytes.
template <typename Real>
int CallOrFail(Call call, const Real& real) {
  const Failure* const failure = Count(call);
  return failure != nullptr ? FailWith(failure->error) : static_cast<int>(real());
}

// A call that moves `size` bytes.
template <typename Real>
ssize_t MoveOrFail(Call call, size_t size, const Real& real) {
  const Failure* const failure = Count(call);
  if (failure == nullptr) return real(size);
  if (failure->error != 0) return FailWith(failure->error);
  return failure->atMost == 0 ? 0 : real(std::min(size, failure->atMost));
}

void* Allocate(size_t size) {
  const size_t limit = Faults().largestAllocation;
  const bool isTooLarge = IsCounting() && limit > 0 && size > limit;
  if (Count(Call::kAllocate) != nullptr || isTooLarge) return nullptr;
  void* const memory = std::malloc(size == 0 ? 1 : size);
  if (memory != nullptr && IsBalanced()) liveAllocations++;
  return memory;
}

void* AllocateOrThrow(size_t size) {
  void* const memory = Allocate(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void Free(void* memory) {
  if (memory != nullptr && IsBalanced()) liveAllocations--;
  std::free(memory);
}

ssize_t CopyExecutable(char* buffer, size_t size) {
  const std::string& executable = Faults().executable;
  const size_t length = std::min(size, executable.size());
  std::memcpy(buffer, executable.data(), length);
  return static_cast<ssize_t>(length);
}

long Status(int folder, const char* path, struct stat* status, int flags) {
  return syscall(SYS_newfstatat, folder, path, status, flags);
}

// Of a file to be made; only such a call has one.
mode_t ModeIn(va_list arguments, int flags) {
  return (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
}

}  // namespace

SystemFaults& Faults() {
  static auto& faults = *new (std::malloc(sizeof(SystemFaults))) SystemFaults;
  return faults;
}

void Arm(Failure failure) {
  SystemFaults& faults = Faults();
  faults.failure = failure;
  faults.hasStruck = false;
  faults.counted = {};
  liveAllocations = 0;
  isArmed = isArmedThread = true;
}

void Disarm() {
  isArmed = isArmedThread = false;
  Faults().liveAllocations = liveAllocations;
}

Uncounted::Uncounted() { uncounted++; }
Uncounted::~Uncounted() { uncounted--; }

}  // namespace hollin::faults

using namespace hollin::faults;

void* operator new(size_t size) { return AllocateOrThrow(size); }
void* operator new[](size_t size) { return AllocateOrThrow(size); }
void* operator new(size_t size, const std::nothrow_t& /*tag*/) noexcept { return Allocate(size); }
void* operator new[](size_t size, const std::nothrow_t& /*tag*/) noexcept { return Allocate(size); }
void operator delete(void* memory) noexcept { Free(memory); }
void operator delete[](void* memory) noexcept { Free(memory); }
void operator delete(void* memory, size_t /*size*/) noexcept { Free(memory); }
void operator delete[](void* memory, size_t /*size*/) noexcept { Free(memory); }
void operator delete(void* memory, const std::nothrow_t& /*tag*/) noexcept { Free(memory); }
void operator delete[](void* memory, const std::nothrow_t& /*tag*/) noexcept { Free(memory); }

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name,cert-dcl50-cpp): the C library's
// own names are reserved ones, and open takes what it takes.
extern "C" {

int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = ModeIn(arguments, flags);
  va_end(arguments);
  return CallOrFail(Call::kOpen, [&] { return syscall(SYS_openat, AT_FDCWD, path, flags, mode); });
}

int openat(int folder, const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = ModeIn(arguments, flags);
  va_end(arguments);
  return CallOrFail(Call::kOpen, [&] { return syscall(SYS_openat, folder, path, flags, mode); });
}

int fstat(int file, struct stat* status) noexcept {
  return CallOrFail(Call::kStatus, [&] { return Status(file, "", status, AT_EMPTY_PATH); });
}

int lstat(const char* path, struct stat* status) noexcept {
  return CallOrFail(Call::kStatus,
                    [&] { return Status(AT_FDCWD, path, status, AT_SYMLINK_NOFOLLOW); });
}

int fstatat(int folder, const char* path, struct stat* status, int flags) noexcept {
  return CallOrFail(Call::kStatus, [&] { return Status(folder, path, status, flags); });
}

ssize_t read(int file, void* buffer, size_t size) {
  return MoveOrFail(Call::kRead, size,
                    [&](size_t count) { return syscall(SYS_read, file, buffer, count); });
}

ssize_t write(int file, const void* buffer, size_t size) {
  return MoveOrFail(Call::kWrite, size,
                    [&](size_t count) { return syscall(SYS_write, file, buffer, count); });
}

int ftruncate(int file, off_t length) noexcept {
  return CallOrFail(Call::kTruncate, [&] { return syscall(SYS_ftruncate, file, length); });
}

int fchmod(int file, mode_t mode) noexcept {
  return CallOrFail(Call::kMode, [&] { return syscall(SYS_fchmod, file, mode); });
}

// As the kernel has it: the descriptor is gone, whatever the call says.
int close(int file) {
  const Failure* const failure = Count(Call::kClose);
  const long result = syscall(SYS_close, file);
  return failure != nullptr ? FailWith(failure->error) : static_cast<int>(result);
}

int remove(const char* path) noexcept {
  return CallOrFail(Call::kRemove, [&] {
    const long result = syscall(SYS_unlinkat, AT_FDCWD, path, 0);
    return result != 0 && errno == EISDIR ? syscall(SYS_unlinkat, AT_FDCWD, path, AT_REMOVEDIR)
                                          : result;
  });
}

uid_t geteuid() noexcept { return static_cast<uid_t>(syscall(SYS_geteuid)) + Faults().userOffset; }

int flock(int file, int operation) noexcept {
  return CallOrFail(Call::kLock, [&] { return syscall(SYS_flock, file, operation); });
}

ssize_t readlink(const char* path, char* buffer, size_t size) noexcept {
  const bool isExecutable = std::strcmp(path, "/proc/self/exe") == 0;
  const Failure* const failure = Count(Call::kReadLink);
  if (failure != nullptr) return FailWith(failure->error);
  if (isExecutable && !Faults().executable.empty()) return CopyExecutable(buffer, size);
  return syscall(SYS_readlinkat, AT_FDCWD, path, buffer, size);
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*start)(void*),
                   void* argument) noexcept {
  using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
  static const auto create = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
  const Failure* const failure = Count(Call::kThread);
  return failure != nullptr ? failure->error : create(thread, attributes, start, argument);
}

hid_device_info* __real_hid_enumerate(unsigned short, unsigned short);
hid_device_info* __wrap_hid_enumerate(unsigned short vendorId, unsigned short productId) {
  const Uncounted scope;
  return __real_hid_enumerate(vendorId, productId);
}

void __real_hid_free_enumeration(hid_device_info*);
void __wrap_hid_free_enumeration(hid_device_info* list) {
  const Uncounted scope;
  __real_hid_free_enumeration(list);
}

hid_device* __real_hid_open(unsigned short, unsigned short, const wchar_t*);
hid_device* __wrap_hid_open(unsigned short vendorId, unsigned short productId,
                            const wchar_t* serial) {
  const Uncounted scope;
  return __real_hid_open(vendorId, productId, serial);
}

int __real_hid_write(hid_device*, const unsigned char*, size_t);
int __wrap_hid_write(hid_device* device, const unsigned char* data, size_t size) {
  const Uncounted scope;
  return __real_hid_write(device, data, size);
}

int __real_hid_read(hid_device*, unsigned char*, size_t);
int __wrap_hid_read(hid_device* device, unsigned char* data, size_t size) {
  const Uncounted scope;
  return __real_hid_read(device, data, size);
}

void __real_hid_close(hid_device*);
void __wrap_hid_close(hid_device* device) {
  const Uncounted scope;
  __real_hid_close(device);
}

int __real_hid_exit();
int __wrap_hid_exit() {
  const Uncounted scope;
  return __real_hid_exit();
}

}  // extern "C"
// NOLINTEND(readability-inconsistent-declaration-parameter-name,cert-dcl50-cpp)
