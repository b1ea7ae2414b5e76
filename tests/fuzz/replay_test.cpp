// SPDX-License-Identifier: MIT
// Every fuzz target bears its seeds, and every input that it once did not bear.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <string>

#include "tests/fuzz/fuzz_targets.h"
#include "tests/support/recorded_log.h"

namespace hollin::fuzz {

// For the names of the cases.
void PrintTo(const Target& target, std::ostream* output) { *output << target.name; }

namespace {

class SeedsTest : public testing::TestWithParam<Target> {};

TEST_P(SeedsTest, AreBorne) {
  const RecordedLog log;
  const std::filesystem::path folder = std::filesystem::path(HOLLIN_FUZZ_SEEDS) / GetParam().name;
  size_t seeds = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    SCOPED_TRACE(entry.path());
    std::ifstream file(entry.path(), std::ios::binary);
    const Bytes input{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    GetParam().run(input);
    seeds++;
  }
  EXPECT_GT(seeds, 0U);
  GetParam().run({});
}

INSTANTIATE_TEST_SUITE_P(Targets, SeedsTest, testing::ValuesIn(Targets().begin(), Targets().end()),
                         [](const auto& each) {
                           std::string name = each.param.name;
                           std::erase(name, '-');
                           return name;
                         });

}  // namespace
}  // namespace hollin::fuzz
