// SPDX-License-Identifier: MIT
// The empty window with what any window of the program's kind has beside: four menus, two further
// fonts and a picture. Nothing is behind any of it.
//
//   hollin_furnished_window PICTURE WIDTH
#include <QApplication>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QSvgRenderer>
#include <QVBoxLayout>
#include <cstdlib>

namespace {

QPixmap Draw(const char* path, int width) {
  QSvgRenderer drawing{QString(path)};
  const QSize drawn = drawing.defaultSize();
  QPixmap pixmap(width, width * drawn.height() / drawn.width());
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  drawing.render(&painter);
  return pixmap;
}

QLabel* Text(const char* text, double size, QFont::Weight weight) {
  auto* const label = new QLabel(text);
  QFont font = label->font();
  font.setPointSizeF(font.pointSizeF() * size);
  font.setWeight(weight);
  label->setFont(font);
  return label;
}

}  // namespace

int main(int argc, char** argv) {
  const QApplication application(argc, argv);
  if (argc != 3) return 2;
  QMainWindow window;
  for (const char* name : {"&File", "&Edit", "&Keyboard", "&Help"}) {
    QMenu* const menu = window.menuBar()->addMenu(name);
    for (const char* action : {"First", "Second", "Third"}) menu->addAction(action);
  }
  auto* const content = new QWidget;
  auto* const column = new QVBoxLayout(content);
  for (const char* text : {"Open", "Refresh", "Update"}) column->addWidget(new QPushButton(text));
  column->addWidget(Text("Update your keyboard", 1.7, QFont::DemiBold));
  for (const char* text : {"Choose the package", "Connect the keyboard", "Update the firmware"}) {
    column->addWidget(Text(text, 1.15, QFont::DemiBold));
  }
  auto* const picture = new QLabel;
  picture->setPixmap(Draw(argv[1], std::atoi(argv[2])));
  column->addWidget(picture);
  column->addWidget(new QProgressBar);
  window.setCentralWidget(content);
  window.show();
  return QApplication::exec();
}
