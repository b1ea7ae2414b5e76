// SPDX-License-Identifier: MIT
// Memory that runs out and files that are not what they seem: replaces the allocation functions and
// fstat of the test program that links it. Does nothing until a test asks for it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace hollin {

struct FailingSystem {
  size_t failingAllocation = 0;       // the n-th from now, from 1; 0 is never
  size_t allocationLimit = SIZE_MAX;  // larger ones fail
  size_t allocationsFailed = 0;

  bool isFstatFailing = false;
  int64_t claimedBytes = 0;       // that fstat adds to the size of a file
  bool isFileOfStranger = false;  // fstat names another owner
};

FailingSystem& System();

}  // namespace hollin
