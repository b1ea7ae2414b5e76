// SPDX-License-Identifier: MIT
// What comes to the window from outside: keyboards that are plugged in or pulled, and packages that
// are dropped.
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMessageBox>
#include <QMimeData>
#include <QTimer>

#include "app/app_error.h"
#include "app/error_presenter.h"
#include "app/question.h"
#include "tests/app/window_test.h"

namespace hollin {
namespace {

class WindowPlugTest : public WindowTest {
 protected:
  // Does something while the next alert is really up, and dismisses it.
  void WithAlert(const std::function<void()>& act) {
    QTimer::singleShot(0, &application, [act] {
      auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      ASSERT_NE(box, nullptr);
      act();
      box->close();
    });
  }
};

class WindowDropTest : public WindowTest {
 protected:
  // Drags that over the window; whether it may be dropped there.
  bool Enter(const QList<QUrl>& urls) {
    data.setUrls(urls);
    QDragEnterEvent event({10, 10}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window.get(), &event);
    return event.isAccepted();
  }
  void Drop(const QList<QUrl>& urls) {
    data.setUrls(urls);
    QDropEvent event({10, 10}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    window->dropEvent(&event);
    Settle();
  }
  QUrl Written(const std::string& name, const Bytes& content = MakePackage()) {
    return QUrl::fromLocalFile(QString::fromStdString(folder.Write(name, content)));
  }

  QMimeData data;
};

TEST_F(WindowPlugTest, ChangeActsLikeRefresh) {
  OpenGoodPackage(0);
  hidapi.calls.clear();
  hidapi.deviceCount = 1;
  window->DevicesMayHaveChanged();
  EXPECT_EQ(hidapi.calls, (std::vector<std::string>{"hid_enumerate", "hid_free_enumeration"}));
  EXPECT_EQ(ButtonStates(), kReadyWithDevice);
  hidapi.deviceCount = 0;
  window->DevicesMayHaveChanged();
  EXPECT_EQ(ButtonStates(), kReadyWithoutDevice);
}

TEST_F(WindowPlugTest, ChangeDoesNothingWhileRefreshIsDisabled) {
  hidapi.deviceCount = 1;
  window->DevicesMayHaveChanged();
  EXPECT_TRUE(hidapi.calls.empty());
  EXPECT_EQ(ButtonStates(), kStarted);
}

TEST_F(WindowPlugTest, ChangeDoesNothingWhileUpdatingNorAfterwards) {
  HeldPause pauses;
  UseFakeUpdate(1);
  window->UpdateDevice();
  pauses.AwaitPause();
  hidapi.calls.clear();
  window->SetButtonEnable(true);  // it is not the button alone that keeps it out
  window->DevicesMayHaveChanged();
  EXPECT_TRUE(hidapi.calls.empty());
  window->duringDialog = [this] {
    hidapi.calls.clear();
    window->DevicesMayHaveChanged();
  };
  pauses.Release();
  AwaitEndOfUpdate();
  EXPECT_TRUE(hidapi.calls.empty());
  EXPECT_EQ(ButtonStates(), kFinished);
}

TEST_F(WindowPlugTest, ChangeDuringAnAlertWaitsForItsEnd) {
  OpenGoodPackage(1);
  hidapi.calls.clear();
  hidapi.deviceCount = 0;
  size_t callsDuringAlert = 99;
  window->duringDialog = [&] {
    window->DevicesMayHaveChanged();
    window->DevicesMayHaveChanged();
    callsDuringAlert = hidapi.calls.size();
  };
  window->OpenDatAtPath(folder.Path("missing.dat"));
  Settle();
  EXPECT_EQ(callsDuringAlert, 0U);
  EXPECT_EQ(hidapi.CountOf("hid_enumerate"), 1U);
  EXPECT_EQ(ButtonStates(), kReadyWithoutDevice);
}

TEST_F(WindowPlugTest, AlertWithoutAChangeIsNotFollowedByARefresh) {
  OpenGoodPackage(1);
  hidapi.calls.clear();
  Open(folder.Path("missing.dat"));
  Settle();
  EXPECT_TRUE(hidapi.calls.empty());
}

TEST_F(WindowPlugTest, ChangeDuringAnyAlertOfTheProgramWaitsForItsEnd) {
  const std::pair<const char*, std::function<void()>> alerts[] = {
      {"alert", [this] { RunAlert({.message = "x"}, window.get()); }},
      {"question",
       [this] {
         static_cast<void>(AskQuestion(
             {.alert = {.message = "x"}, .firstButton = "1", .secondButton = "2"}, window.get()));
       }},
      {"error", [this] { PresentError({.description = "x"}, window.get()); }}};
  OpenGoodPackage(1);
  for (const auto& [name, showAlert] : alerts) {
    hidapi.calls.clear();
    size_t callsDuringAlert = 99;
    WithAlert([&] {
      window->DevicesMayHaveChanged();
      callsDuringAlert = hidapi.calls.size();
    });
    showAlert();
    Settle();
    EXPECT_EQ(callsDuringAlert, 0U) << name;
    EXPECT_EQ(hidapi.CountOf("hid_enumerate"), 1U) << name;
  }
}

TEST_F(WindowPlugTest, ChangeBetweenTwoAlertsWaitsForTheSecond) {
  OpenGoodPackage(1);
  hidapi.calls.clear();
  WithAlert([&] { window->DevicesMayHaveChanged(); });
  RunAlert({.message = "first"}, window.get());
  size_t callsDuringAlert = 99;
  WithAlert([&] {
    Settle();
    callsDuringAlert = hidapi.calls.size();
  });
  RunAlert({.message = "second"}, window.get());
  Settle();
  EXPECT_EQ(callsDuringAlert, 0U);
  EXPECT_EQ(hidapi.CountOf("hid_enumerate"), 1U);
}

TEST_F(WindowPlugTest, ChangeWhileTheOpenPanelIsUpActsLikeRefreshAtOnce) {
  OpenGoodPackage(1);
  hidapi.deviceCount = 0;
  Buttons duringPanel{};
  window->duringDialog = [&] {
    window->DevicesMayHaveChanged();
    duringPanel = ButtonStates();
  };
  Open("");
  EXPECT_EQ(duringPanel, kReadyWithoutDevice);
}

TEST_F(WindowPlugTest, PackageFromOutsideWaitsForTheEndOfAnAlert) {
  const std::string path = folder.Write("good.dat", MakePackage());
  std::string pathDuringAlert;
  WithAlert([&] {
    window->OpenDatFromOutside(folder.Path("earlier.dat"));
    window->OpenDatFromOutside(path);
    pathDuringAlert = Path();
  });
  RunAlert({.message = "x"}, window.get());
  Settle();
  EXPECT_EQ(pathDuringAlert, "");
  EXPECT_EQ(Path(), path);
  EXPECT_TRUE(window->alerts.empty());  // of the earlier one, which is not there
}

TEST_F(WindowPlugTest, PackageFromOutsideWaitsForTheEndOfTheFinalAlert) {
  const RecordedPause pauses;
  UseFakeUpdate(1);
  const std::string path = folder.Write("good.dat", MakePackage());
  window->duringDialog = [&] { window->OpenDatFromOutside(path); };
  Update();
  Settle();
  EXPECT_EQ(Path(), path);
}

TEST_F(WindowPlugTest, PackageFromOutsideIsIgnoredWhileUpdating) {
  HeldPause pauses;
  UseFakeUpdate(1);
  window->UpdateDevice();
  pauses.AwaitPause();
  window->OpenDatFromOutside(folder.Write("good.dat", MakePackage()));
  pauses.Release();
  AwaitEndOfUpdate();
  Settle();
  EXPECT_EQ(Path(), "");
}

TEST_F(WindowPlugTest, PackageFromOutsideWaitsForTheEndOfTheOpenPanel) {
  const std::string path = folder.Write("good.dat", MakePackage());
  std::string pathDuringPanel;
  window->duringDialog = [&] {
    window->OpenDatFromOutside(path);
    pathDuringPanel = Path();
  };
  Open("");
  EXPECT_EQ(pathDuringPanel, "");
  EXPECT_EQ(Path(), path);
}

TEST_F(WindowPlugTest, WhatIsChosenInThePanelGoesBeforeAPackageFromOutside) {
  window->duringDialog = [&] { window->OpenDatFromOutside(folder.Path("other.dat")); };
  OpenGoodPackage(1);
  EXPECT_EQ(Path(), folder.Path("good.dat"));
}

TEST_F(WindowDropTest, DroppedPackageTakesTheStepsAfterThePanel) {
  hidapi.deviceCount = 1;
  const QUrl package = Written("dropped.DAT");
  EXPECT_TRUE(Enter({package}));
  Drop({package});
  EXPECT_EQ(window->panelCount, 0);
  EXPECT_EQ(Path(), folder.Path("dropped.DAT"));
  EXPECT_EQ(Model(), "TS30 61 keys");
  EXPECT_EQ(ButtonStates(), kReadyWithDevice);
}

TEST_F(WindowDropTest, DroppedBrokenPackageIsAnError) {
  Drop({Written("broken.dat", BrokenPackage())});
  EXPECT_EQ(AlertText(), "Checksum or file format error: " + folder.Path("broken.dat"));
}

TEST_F(WindowDropTest, WhatIsNoSinglePackageOnThisComputerIsRefused) {
  const QUrl good = Written("a.dat");
  for (const QList<QUrl>& urls :
       {QList<QUrl>{}, QList<QUrl>{good, Written("b.dat")}, QList<QUrl>{Written("c.bin")},
        QList<QUrl>{QUrl("http://localhost/d.dat")}}) {
    EXPECT_FALSE(Enter(urls));
    Drop(urls);
    EXPECT_EQ(Path(), "");
  }
  EXPECT_TRUE(window->alerts.empty());
}

TEST_F(WindowDropTest, DropIsIgnoredWhileUpdating) {
  HeldPause pauses;
  UseFakeUpdate(1);
  const QUrl package = Written("dropped.dat");
  window->UpdateDevice();
  pauses.AwaitPause();
  EXPECT_FALSE(Enter({package}));
  Drop({package});
  EXPECT_EQ(Path(), "");
  pauses.Release();
  AwaitEndOfUpdate();
}

TEST_F(WindowDropTest, FieldsOfTheWindowTakeNoDrops) {
  EXPECT_TRUE(window->acceptDrops());
  EXPECT_FALSE(window->textFieldPath->acceptDrops());
}

}  // namespace
}  // namespace hollin
