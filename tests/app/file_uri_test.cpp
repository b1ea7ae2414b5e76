// SPDX-License-Identifier: MIT
#include "app/file_uri.h"

#include <gtest/gtest.h>

namespace hollin {
namespace {

TEST(FileUriTest, WhatIsNotPlainIsEscapedByteByByte) {
  EXPECT_EQ(FileUriOf("/a/b-c_d.~0Z"), "file:///a/b-c_d.~0Z");
  EXPECT_EQ(FileUriOf("/a b%20?#[*]"), "file:///a%20b%2520%3F%23%5B%2A%5D");
  EXPECT_EQ(FileUriOf("/\xC3\xBC\xFF\n"), "file:///%C3%BC%FF%0A");
}

TEST(FileUriTest, EveryPathComesBackAsItWas) {
  std::string path = "/";
  for (int byte = 1; byte < 256; byte++) path += static_cast<char>(byte);
  EXPECT_EQ(PathOfFileUri(FileUriOf(path)), path);
}

TEST(FileUriTest, TheFormsThatOtherProgramsWriteAreRead) {
  const std::pair<const char*, const char*> cases[] = {
      {"file:///a/b.dat", "/a/b.dat"},
      {"file:/a/b.dat", "/a/b.dat"},
      {"FILE:///a", "/a"},
      {"file://localhost/a", "/a"},
      {"file:///a%20b%C3%bc", "/a b\xC3\xBC"},
      {"file:///\xC3\xBC", "/\xC3\xBC"},
      {"file:///", "/"},
  };
  for (const auto& [uri, path] : cases) EXPECT_EQ(PathOfFileUri(uri), path) << uri;
}

TEST(FileUriTest, WhatNamesNoFileOfThisComputerIsNothing) {
  for (const char* uri : {"", "file", "file:", "file://", "file:a", "file://elsewhere/a",
                          "file://localhost", "http:///a", "/a", "file:///a%", "file:///a%2",
                          "file:///a%2g", "file:///a%g2", "file:///a%00b", "xfile:///a"}) {
    EXPECT_EQ(PathOfFileUri(uri), std::nullopt) << uri;
  }
}

}  // namespace
}  // namespace hollin
