// SPDX-License-Identifier: MIT
// The window asked to end in each of its alerts and dialogs.
#include <QStringList>
#include <QVariantMap>
#include <csignal>
#include <filesystem>

#include "tests/app/program_at_point.h"
#include "tests/app/session_bus.h"

namespace hollin {
namespace {

constexpr int kQuitOfTheDesktop = 0;  // the others are signals

std::string NameOfWay(const ::testing::TestParamInfo<int>& test) {
  return test.param == kQuitOfTheDesktop ? "Quit" : std::string("SIG") + sigabbrev_np(test.param);
}

class QuitAlertsTest : public ProgramAtPointTest, public ::testing::WithParamInterface<int> {
 protected:
  QuitAlertsTest() { sessionBus = session.Environment(); }

  // The program is ready to be asked over the bus as soon as it has its name there.
  void AwaitBus() {
    ASSERT_TRUE(EventuallyAtLast([this] { return session.Has("com.tovari.Hollin"); }));
  }
  void Open(const std::string& path) {
    StartWindow({path});
    AwaitBus();
  }
  void Quit() {
    if (GetParam() != kQuitOfTheDesktop) return window->Signal(GetParam());
    // The answer may get lost when the program goes; whether it goes is what counts.
    static_cast<void>(
        session.CallApplication("ActivateAction", {"quit", QVariantList(), QVariantMap()}));
  }
  void ExpectGoneFrom(const std::string& alert) {
    ASSERT_TRUE(IsShown(alert));
    ExpectGone([this] { Quit(); });
  }
  // A file where the folder of the program's data should be.
  void SaveWithoutAFolder() {
    std::filesystem::create_directories(folder.Path("data"));
    folder.Write("data/com.tovari.Hollin", "");
    StartWindowWith(PackageOf(kPointUpdates[0]));
    AwaitBus();
    desktop.Press(caption, "ctrl+s");
    ASSERT_TRUE(IsShown(kNoFolder));
  }

  static constexpr const char* kNoFolder =
      "Expected a folder to store application data, found a file .*";
  SessionBus session;
};

TEST_P(QuitAlertsTest, OfAPackageThatCannotBeOpened) {
  Open(folder.Path("missing.dat"));
  ExpectGoneFrom("Error");
}

TEST_P(QuitAlertsTest, OfAPackageThatIsBroken) {
  Open(folder.Write("broken.dat", "no package"));
  ExpectGoneFrom("Error");
}

TEST_P(QuitAlertsTest, OfAnUpdateThatSucceeded) {
  PlugInKeyboard(kPointUpdates[0]);
  StartWindowWith(PackageOf(kPointUpdates[0]));
  AwaitBus();
  PressUpdate();
  ExpectGoneFrom("Information");
  ExpectFlashHoldsImage(kPointUpdates[0]);
}

TEST_P(QuitAlertsTest, OfAnUpdateThatFailed) {
  constexpr size_t kInTheMiddle = 100;
  PlugInKeyboard(kPointUpdates[0], "mute", kInTheMiddle);
  UpdateUntilReport(PackageOf(kPointUpdates[0]), kInTheMiddle);
  AwaitBus();
  keyboard.reset();
  ExpectGoneFrom("Error");
}

TEST_P(QuitAlertsTest, OfTheStoreWithoutAFolder) {
  ASSERT_NO_FATAL_FAILURE(SaveWithoutAFolder());
  ExpectGoneFrom(kNoFolder);
}

TEST_P(QuitAlertsTest, OfTheStoreThatIsNotThere) {
  ASSERT_NO_FATAL_FAILURE(SaveWithoutAFolder());
  desktop.Press(kNoFolder, "Return");
  ExpectGoneFrom("Failed to initialize the store");
}

TEST_P(QuitAlertsTest, OfTheOpenPanel) {
  StartWindowWith(PackageOf(kPointUpdates[0]));
  AwaitBus();
  desktop.Press(caption, "space");
  ExpectGoneFrom("Open File");
}

TEST_P(QuitAlertsTest, OfTheOpenPanelWhileAPackageWaits) {
  const std::string package = PackageOf(kPointUpdates[0]);
  StartWindowWith(package);
  AwaitBus();
  desktop.Press(caption, "space");
  ASSERT_TRUE(IsShown("Open File"));
  const QStringList uris = {"file://" + QString::fromStdString(package)};
  EXPECT_TRUE(session.CallApplication("Open", {uris, QVariantMap()}));
  ExpectGoneFrom("Open File");
}

TEST_P(QuitAlertsTest, OfTheAboutBox) {
  StartWindowWith(PackageOf(kPointUpdates[0]));
  AwaitBus();
  desktop.Press(caption, "alt+h");
  desktop.Press(caption, "Return");  // its only entry
  ExpectGoneFrom("About Hollin");
}

INSTANTIATE_TEST_SUITE_P(Ways, QuitAlertsTest,
                         ::testing::Values(kQuitOfTheDesktop, SIGTERM, SIGINT, SIGHUP), NameOfWay);

using SecondStartSignalTest = QuitAlertsTest;

// Its alert is up before anything is written, so a signal just ends it; the other's files stay.
TEST_P(SecondStartSignalTest, EndsTheStartThatWaitsAndNothingElse) {
  sessionBus.second = "disabled:";
  StartWindowWith(PackageOf(kPointUpdates[0]));
  Subprocess second(SetupOf({HOLLIN_BIN_DIR "/hollin"}));
  ASSERT_TRUE(IsShown("Another Hollin is at work"));
  second.Signal(GetParam());
  EXPECT_EQ(second.Wait(), -GetParam());
  EXPECT_TRUE(TempFilesExist());
  ExpectGone([this] { Quit(); });
}

INSTANTIATE_TEST_SUITE_P(Ways, SecondStartSignalTest, ::testing::Values(SIGTERM, SIGINT, SIGHUP),
                         NameOfWay);

}  // namespace
}  // namespace hollin
