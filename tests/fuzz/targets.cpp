// SPDX-License-Identifier: MIT
#include <cstdio>
#include <cstdlib>

#include "tests/fuzz/fuzz_targets.h"

namespace hollin::fuzz {
namespace {

constexpr Target kTargets[] = {
    {"package", Package},      {"number", Number},        {"config", Config},
    {"lines", Lines},          {"reply", Reply},          {"a1-replies", A1Replies},
    {"a2-replies", A2Replies}, {"c1-replies", C1Replies}, {"a1-text", A1Text},
    {"a2-text", A2Text},       {"c1-text", C1Text},       {"package-update", PackageUpdate},
};

}  // namespace

std::span<const Target> Targets() { return kTargets; }

void Require(bool holds, const char* words) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", words);
  std::abort();
}

}  // namespace hollin::fuzz
