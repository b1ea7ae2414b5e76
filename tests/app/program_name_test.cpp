// SPDX-License-Identifier: MIT
#include "app/program_name.h"

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <array>
#include <filesystem>

namespace hollin {
namespace {

TEST(ProgramNameTest, DesktopKnowsTheProgramByItsInstalledEntry) {
  int argc = 1;
  std::array<char, 8> name{"program"};
  std::array<char*, 2> argv{name.data(), nullptr};
  const QGuiApplication application(argc, argv.data());
  NameProgram();
  EXPECT_EQ(QGuiApplication::applicationName(), "Hollin");
  EXPECT_EQ(QGuiApplication::desktopFileName(), "com.tovari.Hollin");
  EXPECT_TRUE(std::filesystem::exists(HOLLIN_PACKAGING_DIR "/com.tovari.Hollin.desktop"));
}

}  // namespace
}  // namespace hollin
