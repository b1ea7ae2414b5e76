// SPDX-License-Identifier: MIT
// The programs killed at many points of an update: what is left behind stands in nobody's way.
// script/endurance tries all of them.
#include <csignal>

#include "tests/app/program_at_point.h"

namespace hollin {
namespace {

class KillPointsTest : public ProgramAtPointTest,
                       public ::testing::WithParamInterface<PointUpdate> {
 protected:
  // Every other time the keyboard goes on answering until the program is gone.
  [[nodiscard]] static bool IsSilentAt(size_t index) { return index % 2 == 0; }
  static void Kill(Subprocess& program) {
    program.Signal(SIGKILL);
    EXPECT_EQ(program.Wait(), -SIGKILL);
  }
};

TEST_P(KillPointsTest, TheNextWindowStartsCleanlyAndUpdates) {
  const std::string package = PackageOf(GetParam());
  const std::vector<size_t> points = PointsUpTo(ReportsOf(GetParam()));
  for (size_t i = 0; i < points.size(); i++) {
    SCOPED_TRACE(points[i]);
    PlugInKeyboard(GetParam(), "mute", IsSilentAt(i) ? points[i] : 0);
    ASSERT_NO_FATAL_FAILURE(UpdateUntilReport(package, points[i]));
    Kill(*window);
    EXPECT_TRUE(TempFilesExist());
    if (IsSilentAt(i)) RestartKeyboard(GetParam());
    StartWindowWith(package);
    PressUpdate();
    EXPECT_TRUE(IsShown("Information"));
    ExpectFlashHoldsImage(GetParam());
    ExpectGone([this] { window->Signal(SIGTERM); });
  }
}

TEST_P(KillPointsTest, TheNextCommandLineUpdates) {
  const std::string package = PackageOf(GetParam());
  const std::vector<size_t> points = PointsUpTo(ReportsOf(GetParam()));
  for (size_t i = 0; i < points.size(); i++) {
    SCOPED_TRACE(points[i]);
    PlugInKeyboard(GetParam(), "mute", points[i]);
    Subprocess program(SetupOf({HOLLIN_BIN_DIR "/hollin-cli", "update", package}));
    ASSERT_TRUE(EventuallyAtLast([&] { return ReportIsWritten(points[i]); }));
    Kill(program);
    EXPECT_TRUE(TempFilesExist());
    RestartKeyboard(GetParam());
    EXPECT_EQ(UpdateByCommandLine(package), 0);
    ExpectFlashHoldsImage(GetParam());
    EXPECT_FALSE(TempFilesExist());
  }
}

INSTANTIATE_TEST_SUITE_P(Updates, KillPointsTest, ::testing::ValuesIn(kPointUpdates),
                         [](const auto& test) { return std::string(test.param.dataType); });

}  // namespace
}  // namespace hollin
