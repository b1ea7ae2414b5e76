// SPDX-License-Identifier: MIT
// The least that a window of this kind can cost: three buttons, five labels and a progress bar,
// with nothing behind them.
#include <QApplication>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWidget>

int main(int argc, char** argv) {
  const QApplication application(argc, argv);
  QWidget window;
  auto* const column = new QVBoxLayout(&window);
  for (const char* text : {"Open", "Refresh", "Update"}) column->addWidget(new QPushButton(text));
  for (const char* text : {"Path", "Model", "Version", "Status", "Picture"}) {
    column->addWidget(new QLabel(text));
  }
  column->addWidget(new QProgressBar);
  window.show();
  return QApplication::exec();
}
