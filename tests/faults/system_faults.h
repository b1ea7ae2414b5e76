// SPDX-License-Identifier: MIT
// System calls that fail when a test wants it: a program that links this has open, read, write and
// their like, the start of threads and the allocation functions replaced. While it is armed the
// calls are counted, and one of them fails, or does less than it was asked for. What hidapi does,
// and what a test does meanwhile, is left out; the ways into hidapi are wrapped by the linker.
//
// The calls of the thread that arms are counted, the allocations that live on those of all threads.
#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <string>

namespace hollin::faults {

enum class Call {
  kOpen,
  kStatus,  // fstat, lstat and fstatat
  kRead,
  kWrite,
  kTruncate,
  kMode,  // fchmod
  kClose,
  kRemove,
  kLock,
  kReadLink,
  kThread,
  kAllocate,
  kNone,
};
inline constexpr size_t kCalls = static_cast<size_t>(Call::kNone);

// What one call does instead.
struct Failure {
  Call call = Call::kNone;
  size_t index = 0;   // among the calls of its kind, from 1
  int error = 0;      // errno; 0 for a call that only moves `atMost` bytes
  size_t atMost = 0;  // for reading and writing
};

struct SystemFaults {
  Failure failure;
  bool hasStruck = false;
  std::array<size_t, kCalls> counted{};
  long liveAllocations = 0;  // made since arming, less those given back

  // Run before that call, counted from 1 over all kinds but allocations; 0 for never.
  size_t interruptedCall = 0;
  std::function<void()> interruption;

  size_t largestAllocation = 0;  // larger ones fail; 0 for no limit
  unsigned userOffset = 0;       // added to the user's number, so that own files seem a stranger's
  std::string executable;        // what /proc/self/exe leads to; empty for the truth
};

// The one state; Arm forgets what was counted and begins, Disarm ends.
SystemFaults& Faults();
void Arm(Failure failure = {});
void Disarm();

// Keeps what its thread calls out of the count, as long as it lives.
class Uncounted {
 public:
  Uncounted();
  ~Uncounted();
  Uncounted(const Uncounted&) = delete;
  Uncounted& operator=(const Uncounted&) = delete;
};

}  // namespace hollin::faults
