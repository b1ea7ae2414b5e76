// SPDX-License-Identifier: MIT
// What the user sees: the three cards, colours, room for every text.
#include <QTextDocumentFragment>
#include <algorithm>
#include <cmath>

#include "app/keyboard_picture.h"
#include "app/step_card.h"
#include "app/text_label.h"
#include "app/theme.h"
#include "tests/app/window_test.h"

namespace hollin {
namespace {

using States = std::array<StepState, 3>;
using enum StepState;

class WindowLookTest : public WindowTest {
 protected:
  // A window in our own colours, like those of a light or a dark desktop.
  void Launch(bool isDark) {
    window.reset();
    if (isDark) {
      QPalette dark(Qt::white, Qt::black, Qt::gray, Qt::gray, Qt::gray, Qt::white, Qt::white,
                    Qt::black, Qt::black);
      QApplication::setPalette(dark);
    }
    UseOwnLook();
    window = std::make_unique<TestWindow>();
    window->InitButton();
    window->show();
  }
  [[nodiscard]] States Cards() const {
    const auto cards = window->findChildren<StepCard*>();
    EXPECT_EQ(cards.size(), 3);
    return {cards.at(0)->State(), cards.at(1)->State(), cards.at(2)->State()};
  }
  [[nodiscard]] std::array<bool, 3> Emphasised() const {
    return {window->buttonOpen->isDefault(), window->buttonRefresh->isDefault(),
            window->buttonUpdate->isDefault()};
  }
  void ExpectNoTextCut() {
    for (const QLabel* label : window->findChildren<QLabel*>()) {
      if (!label->isVisible()) continue;
      const int needed = label->hasHeightForWidth() ? label->heightForWidth(label->width())
                                                    : label->sizeHint().height();
      EXPECT_GE(label->height(), needed) << label->text().toStdString();
      if (!label->wordWrap()) {
        EXPECT_GE(label->width(), label->sizeHint().width()) << label->text().toStdString();
      }
    }
  }
  QColor ColourIn(const QWidget& widget, QPointF part) {
    const QImage image = window->grab().toImage();
    const QPoint corner = widget.mapTo(window.get(), QPoint(0, 0));
    return image.pixelColor(corner + QPoint(static_cast<int>(part.x() * widget.width()),
                                            static_cast<int>(part.y() * widget.height())));
  }
};

double Luminance(const QColor& colour) {
  const auto linear = [](double part) {
    return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
         0.0722 * linear(colour.blueF());
}

double Contrast(const QColor& a, const QColor& b) {
  const auto [low, high] = std::minmax({Luminance(a), Luminance(b)});
  return (high + 0.05) / (low + 0.05);
}

const Theme& ThemeOf(bool isDark) {
  return ThemeFor(isDark ? QPalette(Qt::white, Qt::black, Qt::gray, Qt::gray, Qt::gray, Qt::white,
                                    Qt::white, Qt::black, Qt::black)
                         : QPalette(Qt::lightGray));
}

TEST_F(WindowLookTest, CardsTellWhichStepComesNext) {
  EXPECT_EQ(Cards(), (States{kNext, kWaiting, kWaiting}));
  EXPECT_EQ(Emphasised(), (std::array{true, false, false}));
  OpenGoodPackage(0);
  EXPECT_EQ(Cards(), (States{kDone, kNext, kWaiting}));
  EXPECT_EQ(Emphasised(), (std::array{false, true, false}));
  OpenGoodPackage(2);
  EXPECT_EQ(Cards(), (States{kDone, kAttention, kWaiting}));
  EXPECT_EQ(Emphasised(), (std::array{false, true, false}));
  OpenGoodPackage(1);
  EXPECT_EQ(Cards(), (States{kDone, kDone, kNext}));
  EXPECT_EQ(Emphasised(), (std::array{false, false, true}));
}

TEST_F(WindowLookTest, CardsTellThatAPackageWasRefused) {
  OpenGoodPackage(1);
  Open(folder.Write("broken.dat", BrokenPackage()));
  EXPECT_EQ(Cards(), (States{kAttention, kWaiting, kWaiting}));
  EXPECT_EQ(Emphasised(), (std::array{true, false, false}));
  window->RefreshDevice();
  EXPECT_EQ(Cards(), (States{kAttention, kWaiting, kWaiting}));
}

TEST_F(WindowLookTest, CardsFollowAnUpdate) {
  HeldPause pauses;
  UseFakeUpdate(1);
  window->UpdateDevice();
  pauses.AwaitPause();
  EXPECT_EQ(Cards(), (States{kDone, kDone, kBusy}));
  EXPECT_EQ(Emphasised(), (std::array{false, false, false}));
  States duringAlert{};
  window->duringDialog = [&] { duringAlert = Cards(); };
  pauses.Release();
  AwaitEndOfUpdate();
  EXPECT_EQ(duringAlert, (States{kDone, kDone, kDone}));
  window->RefreshProgress(-2);
  EXPECT_EQ(Cards(), (States{kDone, kDone, kFailed}));
  EXPECT_EQ(Emphasised(), (std::array{false, false, true}));
}

TEST_F(WindowLookTest, SignsTellTheirStateWithoutColours) {
  StepSign sign(2);
  std::vector<QImage> pictures;
  for (const StepState state : {kWaiting, kNext, kBusy, kDone, kAttention, kFailed}) {
    sign.SetState(state);
    EXPECT_FALSE(sign.toolTip().isEmpty());
    EXPECT_EQ(sign.accessibleName(), "Step 2 of 3: " + sign.toolTip());
    const QImage picture = sign.grab().toImage().convertToFormat(QImage::Format_Mono);
    for (const QImage& other : pictures) EXPECT_NE(picture, other);
    pictures.push_back(picture);
  }
}

TEST_F(WindowLookTest, BarStandsOnTheSystemGrayInBothPalettes) {
  for (const bool isDark : {false, true}) {
    Launch(isDark);
    UseFakeUpdate(4);
    EXPECT_EQ(ColourIn(*window->progressStatus, {0.5, 0.5}), QColor(142, 142, 147));
    window->RefreshProgress(1);
    EXPECT_EQ(ColourIn(*window->progressStatus, {0.5, 0.5}), QColor(142, 142, 147));
    window->RefreshProgress(3);
    EXPECT_EQ(ColourIn(*window->progressStatus, {0.5, 0.5}), ThemeOf(isDark).bar);
  }
}

TEST_F(WindowLookTest, ColoursAreLikeTheDesktops) {
  Launch(false);
  EXPECT_FALSE(IsDark(window->palette()));
  Launch(true);
  EXPECT_TRUE(IsDark(window->palette()));
}

TEST_F(WindowLookTest, ColoursStandOffFromTheirGround) {
  for (const bool isDark : {false, true}) {
    const Theme& theme = ThemeOf(isDark);
    EXPECT_GE(Contrast(theme.text, theme.card), 7);
    EXPECT_GE(Contrast(theme.text, theme.ground), 7);
    EXPECT_GE(Contrast(theme.quietText, theme.card), 4.5);
    EXPECT_GE(Contrast(theme.quietText, theme.ground), 4.5);
    EXPECT_GE(Contrast(theme.onAccent, theme.accent), 4.5);
    EXPECT_GE(Contrast(theme.bar, kSystemGray), 2.9);
    for (const QColor& colour : {theme.accent, theme.good, theme.caution, theme.bad}) {
      EXPECT_GE(Contrast(colour, theme.card), 3);
      EXPECT_GE(Contrast(theme.onAccent, colour), 3);
    }
  }
}

TEST_F(WindowLookTest, LongestStatusIsNotCutInTheSmallestWindow) {
  Launch(false);
  window->resize(1, 1);
  OpenGoodPackage(0, {.model = std::string(16, 'W'),
                      .version = std::string(16, 'W'),
                      .keys = {"WWWWWWWW", "WWWWWWWW", "WWWWWWWW"}});
  Settle();
  window->resize(1, 1);
  Settle();
  ExpectNoTextCut();
}

TEST_F(WindowLookTest, WindowGrowsWithItsStatusAndMayBeMadeLarger) {
  Launch(false);
  const QSize size = window->size();
  EXPECT_GE(size.width(), window->minimumWidth());
  window->resize(size * 2);
  Settle();
  EXPECT_EQ(window->size(), size * 2);
  EXPECT_GT(window->textFieldDeviceStatus->width(), size.width());
  ExpectNoTextCut();
}

// 1366 x 768 at 150 % leaves 910 x 512.
TEST_F(WindowLookTest, WindowFitsOnASmallScreen) {
  Launch(false);
  EXPECT_LE(window->minimumSizeHint().height(), 512 + 30);
  EXPECT_LE(window->minimumSizeHint().width(), 910);
}

TEST_F(WindowLookTest, BreakOfTheStatusIsDrawnWithoutBlanks) {
  OpenGoodPackage(0, {.keys = {"Shift", "", ""}});
  const auto& status = dynamic_cast<const TextLabel&>(*window->textFieldDeviceStatus);
  EXPECT_EQ(status.Shown(),
            "The TS30 is not connected. Please hold down the \"Shift\"\nbuttons while powering on "
            "the TS30.");
}

TEST_F(WindowLookTest, PlaceholderIsNoText) {
  TextLabel label(2);
  label.SetPlaceholder("Nothing yet");
  EXPECT_EQ(label.text(), "");
  EXPECT_EQ(label.Shown(), "Nothing yet");
  label.setText("Something");
  EXPECT_EQ(label.Shown(), "Something");
  EXPECT_GE(label.minimumSizeHint().height(), 2 * label.fontMetrics().lineSpacing());
}

TEST_F(WindowLookTest, DrawingIsThere) {
  EXPECT_FALSE(window->imageView->pixmap().isNull());
  EXPECT_EQ(window->imageView->pixmap().devicePixelRatio(), window->devicePixelRatio());
  EXPECT_GT(window->imageView->pixmap().toImage().pixelColor(145, 60).alpha(), 200);
}

// A picture of another ratio is what is left of a screen that the window has been moved from.
TEST_F(WindowLookTest, DrawingFollowsTheScreensPixels) {
  Launch(false);
  const double ratio = window->devicePixelRatioF();
  window->imageView->setPixmap(DrawKeyboard(290, ratio * 2));
  static_cast<void>(window->imageView->grab());
  EXPECT_EQ(window->imageView->pixmap().devicePixelRatio(), ratio);
  EXPECT_EQ(window->imageView->pixmap().deviceIndependentSize().width(), 290);
}

// The desktop of the tests is a light one, so it has become light when it is looked at again.
TEST_F(WindowLookTest, WindowFollowsADesktopThatChangesItsColours) {
  Launch(true);
  UseFakeUpdate(4);
  EXPECT_TRUE(IsDark(window->palette()));
  QEvent change(QEvent::ThemeChange);
  QApplication::sendEvent(window.get(), &change);
  Settle();
  const Theme& light = ThemeOf(false);
  EXPECT_EQ(window->palette().color(QPalette::Window), light.ground);
  EXPECT_EQ(ColourIn(*window, {0.005, 0.5}), light.ground);
  const auto& note = *window->progressNote;
  EXPECT_EQ(note.palette().color(note.foregroundRole()), light.quietText);
  EXPECT_EQ(ColourIn(*window->progressStatus, {0.5, 0.5}), QColor(142, 142, 147));
}

TEST_F(WindowLookTest, PathInTheTooltipIsShownAsItIs) {
  window->OpenDatAtPath("/R&D <b>.dat");
  const QString tip = window->textFieldPath->toolTip();
  EXPECT_TRUE(Qt::mightBeRichText(tip));
  EXPECT_EQ(QTextDocumentFragment::fromHtml(tip).toPlainText(), "/R&D <b>.dat");
}

TEST_F(WindowLookTest, NoteTellsHowFarTheUpdateIs) {
  HeldPause pauses;
  UseFakeUpdate(3);
  EXPECT_EQ(window->progressNote->text(), "");
  window->UpdateDevice();
  pauses.AwaitPause();
  EXPECT_EQ(window->progressNote->text(), "Step 1 of 3  \u00B7  0:00 elapsed");
  window->now += 4s;
  pauses.Release();
  pauses.AwaitPause();
  EXPECT_TRUE(Await(
      [this] { return window->progressNote->text() == "Step 2 of 3  \u00B7  0:04 elapsed"; }));
  window->now += 68s;
  pauses.Release(2);
  AwaitEndOfUpdate();
  EXPECT_EQ(window->progressNote->text(), "Completed in 1:12");
  window->RefreshDevice();
  EXPECT_EQ(window->progressNote->text(), "");
}

TEST_F(WindowLookTest, NoteTellsTheTimeEachSecondWhileAnUpdateRuns) {
  HeldPause pauses;
  UseFakeUpdate(1);
  const auto timers = window->findChildren<QTimer*>(Qt::FindDirectChildrenOnly);
  ASSERT_EQ(timers.size(), 1);
  QTimer& timer = *timers[0];
  EXPECT_FALSE(timer.isActive());
  window->UpdateDevice();
  pauses.AwaitPause();
  EXPECT_TRUE(timer.isActive());
  EXPECT_EQ(timer.intervalAsDuration(), 1s);
  window->now += 61s;
  timer.setInterval(0);
  EXPECT_TRUE(Await(
      [this] { return window->progressNote->text() == "Step 1 of 1  \u00B7  1:01 elapsed"; }));
  bool isActiveDuringAlert = true;
  window->duringDialog = [&] { isActiveDuringAlert = timer.isActive(); };
  pauses.Release();
  AwaitEndOfUpdate();
  EXPECT_FALSE(isActiveDuringAlert);
}

TEST_F(WindowLookTest, NoteTellsWhereAnUpdateFailed) {
  const RecordedPause pauses;
  UseFakeUpdate(3).failingStep = 1;
  window->UpdateDevice();
  window->now += 9s;
  AwaitEndOfUpdate();
  EXPECT_EQ(window->progressNote->text(), "Stopped in step 2 of 3 after 0:09");
}

}  // namespace
}  // namespace hollin
