// SPDX-License-Identifier: MIT
// Texts that are compared with files in tests/cli/golden/, which were read by a person before they
// were put there. With HOLLIN_WRITE_GOLDEN set in the environment the files are written instead.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

namespace hollin {

inline void ExpectGolden(const std::string& name, const std::string& text) {
  const std::string path = HOLLIN_GOLDEN_DIR "/" + name;
  if (std::getenv("HOLLIN_WRITE_GOLDEN") != nullptr) {
    std::ofstream(path, std::ios::binary) << text;
    return;
  }
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file) << path;
  const std::string golden((std::istreambuf_iterator<char>(file)),
                           std::istreambuf_iterator<char>());
  EXPECT_EQ(text, golden) << path;
}

}  // namespace hollin
