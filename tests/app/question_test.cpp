// SPDX-License-Identifier: MIT
// The alerts of the data store as they are shown.
#include "app/question.h"

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <array>
#include <functional>
#include <stdexcept>

#include "app/app_error.h"
#include "app/error_presenter.h"

namespace hollin {
namespace {

class QuestionTest : public ::testing::Test {
 protected:
  // Does something with the next alert that is shown.
  void WithAlert(const std::function<void(QMessageBox&)>& act) {
    QTimer::singleShot(0, &application, [act] {
      const QPointer<QMessageBox> box(
          qobject_cast<QMessageBox*>(QApplication::activeModalWidget()));
      ASSERT_NE(box, nullptr);
      act(*box);
      if (box) box->close();
    });
  }
  [[nodiscard]] static QAbstractButton* Button(const QMessageBox& box, const QString& text) {
    for (QAbstractButton* button : box.buttons()) {
      if (button->text() == text) return button;
    }
    throw std::runtime_error("no such button");
  }
  [[nodiscard]] int Ask(const std::function<void(QMessageBox&)>& answer) {
    WithAlert(answer);
    return AskQuestion({.alert = {.message = "Go <b>on</b>?",
                                  .informativeText = "<i>Or not</i>",
                                  .style = AlertStyle::kWarning},
                        .firstButton = "Go on",
                        .secondButton = "Stay"},
                       &parent);
  }

  int argc = 1;
  std::array<char, 7> name{"hollin"};
  std::array<char*, 2> argv{name.data(), nullptr};
  QApplication application{argc, argv.data()};
  QWidget parent;
};

TEST_F(QuestionTest, EachButtonHasItsNumber) {
  EXPECT_EQ(Ask([](QMessageBox& box) { Button(box, "Go on")->click(); }), 1000);
  EXPECT_EQ(Ask([](QMessageBox& box) { Button(box, "Stay")->click(); }), 1001);
}

TEST_F(QuestionTest, EscAndClosingAreTheSecondButton) {
  EXPECT_EQ(Ask([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); }), 1001);
  EXPECT_EQ(Ask([](QMessageBox& box) { box.close(); }), 1001);
}

TEST_F(QuestionTest, ShowsItsTextsAsTheyAre) {
  static_cast<void>(Ask([](QMessageBox& box) {
    EXPECT_EQ(box.text(), "Go <b>on</b>?");
    EXPECT_EQ(box.informativeText(), "<i>Or not</i>");
    EXPECT_EQ(box.icon(), QMessageBox::Warning);
    EXPECT_EQ(box.buttons().size(), 2);
    EXPECT_EQ(box.defaultButton()->text(), "Stay");
    for (const QLabel* label : box.findChildren<QLabel*>()) {
      EXPECT_EQ(label->textFormat(), Qt::PlainText);
    }
  }));
}

TEST_F(QuestionTest, WindowThatGoesWhileItIsAskedIsNoAnswerButTheSecond) {
  auto* const shortLived = new QWidget;
  WithAlert([shortLived](QMessageBox& box) {
    box.done(0);
    delete shortLived;
  });
  EXPECT_EQ(
      AskQuestion({.alert = {.message = "?"}, .firstButton = "1", .secondButton = "2"}, shortLived),
      1001);
}

TEST_F(QuestionTest, AnErrorIsPresentedByItsDescriptionAndFailureReason) {
  WithAlert([](QMessageBox& box) {
    EXPECT_EQ(box.text(), "Failed <to> initialize");
    EXPECT_EQ(box.informativeText(), "Because");
    EXPECT_EQ(box.icon(), QMessageBox::Warning);
    EXPECT_EQ(box.buttons().size(), 1);
  });
  EXPECT_FALSE(PresentError({.domain = "YOUR_ERROR_DOMAIN",
                             .code = 9999,
                             .description = "Failed <to> initialize",
                             .failureReason = "Because"},
                            &parent));
}

}  // namespace
}  // namespace hollin
