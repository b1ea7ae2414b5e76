// SPDX-License-Identifier: MIT
// The window asked to end, or closed, at many points of an update. script/endurance tries all of
// them.
#include <array>
#include <csignal>

#include "tests/app/program_at_point.h"
#include "tests/support/eventually.h"

namespace hollin {
namespace {

constexpr int kQuitOfTheMenu = 0;  // the others are signals

struct QuitCase {
  PointUpdate update;
  int way;
};

std::vector<QuitCase> QuitCases() {
  std::vector<QuitCase> cases;
  for (const PointUpdate& update : kPointUpdates) {
    for (const int way : {kQuitOfTheMenu, SIGTERM, SIGINT, SIGHUP}) cases.push_back({update, way});
  }
  return cases;
}

void PrintTo(const QuitCase& quitCase, std::ostream* out) { *out << quitCase.update.dataType; }

class QuitPointsTest : public ProgramAtPointTest, public ::testing::WithParamInterface<QuitCase> {
 protected:
  // A signal may also come while the worker is busy; the menu is not to be reached in the alert at
  // the end, so that the keyboard has to keep silent then.
  [[nodiscard]] static bool IsSilentAt(size_t index) {
    return GetParam().way == kQuitOfTheMenu || index % 2 == 0;
  }
  void Quit() {
    if (GetParam().way == kQuitOfTheMenu) return desktop.Press(caption, "ctrl+q");
    window->Signal(GetParam().way);
  }
};

TEST_P(QuitPointsTest, ProgramIsGoneWithItsFilesAndTheKeyboardCanBeUpdatedAgain) {
  const PointUpdate& update = GetParam().update;
  const std::string package = PackageOf(update);
  const std::vector<size_t> points = PointsUpTo(ReportsOf(update));
  for (size_t i = 0; i < points.size(); i++) {
    SCOPED_TRACE(points[i]);
    PlugInKeyboard(update, "mute", IsSilentAt(i) ? points[i] : 0);
    ASSERT_NO_FATAL_FAILURE(UpdateUntilReport(package, points[i]));
    ExpectGone([this] { Quit(); });
    if (IsSilentAt(i)) RestartKeyboard(update);
    EXPECT_EQ(UpdateByCommandLine(package), 0);
    ExpectFlashHoldsImage(update);
  }
}

std::string NameOfCase(const ::testing::TestParamInfo<QuitCase>& test) {
  const int way = test.param.way;
  return std::string(test.param.update.dataType) + "_" +
         (way == kQuitOfTheMenu ? "Quit" : std::string("SIG") + sigabbrev_np(way));
}

INSTANTIATE_TEST_SUITE_P(Updates, QuitPointsTest, ::testing::ValuesIn(QuitCases()), NameOfCase);

class ClosePointsTest : public ProgramAtPointTest,
                        public ::testing::WithParamInterface<PointUpdate> {
 protected:
  void HaltAtReport(size_t report) {
    PlugInKeyboard(GetParam(), "hold", report);
    StartWindowWith(PackageOf(GetParam()));
    PressUpdate();
    ASSERT_TRUE(keyboard->AwaitHalt());
  }
};

TEST_P(ClosePointsTest, WindowIsOnlyHiddenAndTheUpdateFinishes) {
  for (const size_t point : PointsUpTo(ReportsOf(GetParam()))) {
    SCOPED_TRACE(point);
    ASSERT_NO_FATAL_FAILURE(HaltAtReport(point));
    desktop.Close(caption);
    EXPECT_TRUE(EventuallyAtLast([this] { return !desktop.Shows(caption); }));
    keyboard->Signal(SIGCONT);
    EXPECT_TRUE(IsShown("Information"));
    EXPECT_TRUE(IsShown(caption));
    ExpectFlashHoldsImage(GetParam());
    ExpectGone([this] { window->Signal(SIGTERM); });
  }
}

INSTANTIATE_TEST_SUITE_P(Updates, ClosePointsTest, ::testing::ValuesIn(kPointUpdates),
                         [](const auto& test) { return std::string(test.param.dataType); });

}  // namespace
}  // namespace hollin
