// SPDX-License-Identifier: MIT
// libFuzzer's entry. The environment variable HOLLIN_FUZZ_TARGET names the target.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "base/log.h"
#include "tests/fuzz/fuzz_targets.h"

namespace {

const hollin::fuzz::Target* chosen = nullptr;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  const char* name = std::getenv("HOLLIN_FUZZ_TARGET");
  for (const hollin::fuzz::Target& target : hollin::fuzz::Targets()) {
    if (name != nullptr && std::string_view(name) == target.name) chosen = &target;
  }
  if (chosen == nullptr) {
    std::fprintf(stderr, "HOLLIN_FUZZ_TARGET names no target\n");
    std::exit(2);
  }
  hollin::SetLogFunction([](const std::string& /*line*/) {});
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  chosen->run({data, size});
  return 0;
}
