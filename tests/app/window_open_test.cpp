// SPDX-License-Identifier: MIT
#include <QEvent>
#include <array>

#include "tests/app/window_test.h"

namespace hollin {
namespace {

// Notes the outlets in the order in which they were disabled or enabled.
class EnabledChanges : public QObject {
 public:
  bool eventFilter(QObject* object, QEvent* event) override {
    if (event->type() == QEvent::EnabledChange) changed.push_back(object);
    return false;
  }
  std::vector<QObject*> changed;
};

class WindowOpenTest : public WindowTest {};

TEST_F(WindowOpenTest, StartsWithOpenAlone) {
  EXPECT_EQ(ButtonStates(), kStarted);
  EXPECT_EQ(Path(), "");
  EXPECT_EQ(Model(), "");
  EXPECT_EQ(Version(), "");
  EXPECT_EQ(Status(), "");
  EXPECT_TRUE(hidapi.calls.empty());
}

TEST_F(WindowOpenTest, ButtonsReadOpenRefreshUpdate) {
  EXPECT_EQ(window->buttonOpen->text(), "Open");
  EXPECT_EQ(window->buttonRefresh->text(), "Refresh");
  EXPECT_EQ(window->buttonUpdate->text(), "Update");
}

TEST_F(WindowOpenTest, ThreeButtonsAreSwitchedRefreshFirstOpenLast) {
  window->SetButtonEnable(false);
  EnabledChanges changes;
  for (QObject* button : {window->buttonOpen, window->buttonRefresh, window->buttonUpdate}) {
    button->installEventFilter(&changes);
  }
  window->SetButtonEnable(true);
  EXPECT_EQ(changes.changed, (std::vector<QObject*>{window->buttonRefresh, window->buttonUpdate,
                                                    window->buttonOpen}));
  EXPECT_EQ(ButtonStates(), (Buttons{true, true, true}));
  window->SetButtonEnable(false);
  EXPECT_EQ(ButtonStates(), (Buttons{false, false, false}));
}

TEST_F(WindowOpenTest, ButtonsDoWhatTheySay) {
  hidapi.deviceCount = 1;
  window->SetButtonEnable(true);
  window->buttonOpen->click();
  EXPECT_EQ(window->panelCount, 1);
  window->buttonRefresh->click();
  EXPECT_EQ(hidapi.CountOf("hid_enumerate"), 1U);
  window->buttonUpdate->click();
  EXPECT_TRUE(window->IsUpdating());
  AwaitEndOfUpdate();
}

TEST_F(WindowOpenTest, ErrorsAreWarningsTitledError) {
  window->ShowErrorMessage("What went wrong");
  ASSERT_EQ(window->alerts.size(), 1U);
  EXPECT_EQ(window->alerts[0].message, "Error");
  EXPECT_EQ(AlertText(), "What went wrong");
  EXPECT_EQ(window->alerts[0].style, AlertStyle::kWarning);
  EXPECT_EQ(window->alerts[0].icon, AlertIcon::kOfStyle);
}

TEST_F(WindowOpenTest, CancellingThePanelChangesNothing) {
  window->OpenDat();
  EXPECT_EQ(window->panelCount, 1);
  EXPECT_EQ(ButtonStates(), kStarted);
  EXPECT_EQ(Path(), "");
  EXPECT_TRUE(window->alerts.empty());
}

TEST_F(WindowOpenTest, CancellingThePanelKeepsTheOpenedPackage) {
  OpenGoodPackage();
  const std::string path = Path();
  const std::string status = Status();
  hidapi.calls.clear();
  Open("");
  EXPECT_EQ(Path(), path);
  EXPECT_EQ(Model(), "TS30 61 keys");
  EXPECT_EQ(Version(), "V1.2.3");
  EXPECT_EQ(Status(), status);
  EXPECT_EQ(ButtonStates(), kReadyWithDevice);
  EXPECT_TRUE(window->datFile.IsFileReady());
  EXPECT_TRUE(hidapi.calls.empty());
}

TEST_F(WindowOpenTest, GoodPackageShowsWhatItHolds) {
  OpenGoodPackage(0);
  EXPECT_EQ(Path(), folder.Path("good.dat"));
  EXPECT_EQ(Model(), "TS30 61 keys");
  EXPECT_EQ(Version(), "V1.2.3");
}

TEST_F(WindowOpenTest, GoodPackageWithoutDevice) {
  OpenGoodPackage(0);
  EXPECT_EQ(ButtonStates(), kReadyWithoutDevice);
  EXPECT_EQ(Status(), "The TS30 is not connected.");
}

TEST_F(WindowOpenTest, GoodPackageWithOneDevice) {
  OpenGoodPackage(1);
  EXPECT_EQ(ButtonStates(), kReadyWithDevice);
  EXPECT_EQ(Status(), "The TS30 is connected. Please press the \"Update\" button now.");
}

TEST_F(WindowOpenTest, GoodPackageWithTwoDevices) {
  OpenGoodPackage(2);
  EXPECT_EQ(ButtonStates(), kReadyWithoutDevice);
  EXPECT_EQ(Status(), "More than one device! Remove some devices");
}

TEST_F(WindowOpenTest, FileThatCannotBeReadKeepsTheStartedState) {
  const std::string path = folder.Path("missing.dat");
  Open(path);
  ASSERT_EQ(window->alerts.size(), 1U);
  EXPECT_EQ(AlertText(), "Unable to open dat file: " + path);
  EXPECT_EQ(window->alerts[0].message, "Error");
  EXPECT_EQ(window->alerts[0].style, AlertStyle::kWarning);
  EXPECT_EQ(Path(), path);
  EXPECT_EQ(ButtonStates(), kStarted);
  EXPECT_TRUE(hidapi.calls.empty());
}

TEST_F(WindowOpenTest, BrokenPackageKeepsTheStartedState) {
  const std::string path = folder.Write("broken.dat", BrokenPackage());
  Open(path);
  ASSERT_EQ(window->alerts.size(), 1U);
  EXPECT_EQ(AlertText(), "Checksum or file format error: " + path);
  EXPECT_EQ(window->alerts[0].message, "Error");
  EXPECT_EQ(window->alerts[0].style, AlertStyle::kWarning);
  EXPECT_EQ(Path(), path);
  EXPECT_EQ(Model(), "");
  EXPECT_EQ(ButtonStates(), kStarted);
  EXPECT_TRUE(hidapi.calls.empty());
}

TEST_F(WindowOpenTest, PathIsShownBeforeTheFileIsRead) {
  QObject::connect(window->textFieldPath, &QLineEdit::textChanged, [this](const QString& shown) {
    EXPECT_EQ(shown.toStdString(), folder.Path("late.dat"));
    folder.Write("late.dat", MakePackage());  // is not there before
  });
  Open(folder.Path("late.dat"));
  EXPECT_TRUE(window->alerts.empty());
  EXPECT_EQ(Model(), "TS30 61 keys");
}

TEST_F(WindowOpenTest, BrokenPackageAfterAGoodOneKeepsWhatWasShown) {
  OpenGoodPackage(0, {.keys = {"A", "", ""}});
  const std::string status = Status();
  const std::string path = folder.Write("broken.dat", BrokenPackage());
  Open(path);
  EXPECT_EQ(Path(), path);
  EXPECT_EQ(Model(), "TS30 61 keys");
  EXPECT_EQ(Version(), "V1.2.3");
  EXPECT_EQ(Status(), status);
  EXPECT_EQ(ButtonStates(), kReadyWithoutDevice);
}

TEST_F(WindowOpenTest, MissingFileAfterAGoodPackageKeepsTheButtons) {
  OpenGoodPackage(1);
  Open(folder.Path("missing.dat"));
  EXPECT_EQ(ButtonStates(), kReadyWithDevice);
  EXPECT_EQ(Model(), "TS30 61 keys");
  EXPECT_EQ(Version(), "V1.2.3");
}

TEST_F(WindowOpenTest, UpdateAfterABrokenPackageSendsNothingAndFails) {
  const RecordedPause pauses;
  OpenGoodPackage(1);
  Open(folder.Write("broken.dat", BrokenPackage()));
  EXPECT_EQ(ButtonStates(), kReadyWithDevice);
  window->alerts.clear();
  hidapi.calls.clear();
  Update();
  EXPECT_EQ(AlertText(), "Update Error!");
  EXPECT_TRUE(hidapi.calls.empty());
  EXPECT_TRUE(hidapi.writes.empty());
}

TEST_F(WindowOpenTest, RefreshAfterABrokenPackageNamesNoButtons) {
  OpenGoodPackage(0, {.keys = {"A", "B", ""}});
  Open(folder.Write("broken.dat", BrokenPackage()));
  window->RefreshDevice();
  EXPECT_EQ(Status(), "The TS30 is not connected.");
}

TEST_F(WindowOpenTest, AnotherPackageReplacesWhatIsShown) {
  OpenGoodPackage(0);
  Open(folder.Write("other.dat", MakePackage({.model = "TS30 49 keys", .version = "V2"})));
  EXPECT_EQ(Model(), "TS30 49 keys");
  EXPECT_EQ(Version(), "V2");
}

TEST_F(WindowOpenTest, SecondPressOnOpenOpensNoPanelOverTheFirst) {
  window->duringDialog = [this] { window->OpenDat(); };
  Open("");
  EXPECT_EQ(window->panelCount, 1);
}

TEST_F(WindowOpenTest, PackageGivenByPathTakesTheSameSteps) {
  hidapi.deviceCount = 1;
  window->OpenDatAtPath(folder.Write("given.dat", MakePackage()));
  EXPECT_EQ(window->panelCount, 0);
  EXPECT_EQ(Path(), folder.Path("given.dat"));
  EXPECT_EQ(Model(), "TS30 61 keys");
  EXPECT_EQ(ButtonStates(), kReadyWithDevice);
}

TEST_F(WindowOpenTest, WindowGoneDuringThePanelIsLeftAlone) {
  window->chosenPath = folder.Write("good.dat", MakePackage());
  window->duringDialog = [this] { window.reset(); };
  TestWindow& gone = *window;
  gone.OpenDat();
  EXPECT_EQ(window, nullptr);
  EXPECT_TRUE(hidapi.calls.empty());
}

TEST_F(WindowOpenTest, WindowGoneDuringAnErrorIsLeftAlone) {
  window->duringDialog = [this] { window.reset(); };
  TestWindow& gone = *window;
  gone.OpenDatAtPath(folder.Path("missing.dat"));
  EXPECT_EQ(window, nullptr);
}

TEST_F(WindowOpenTest, TwoActionsDoNothing) {
  OpenGoodPackage(1);
  hidapi.calls.clear();
  window->BGImagr();
  window->opentest();
  EXPECT_EQ(ButtonStates(), kReadyWithDevice);
  EXPECT_TRUE(hidapi.calls.empty());
  EXPECT_TRUE(window->alerts.empty());
}

}  // namespace
}  // namespace hollin
