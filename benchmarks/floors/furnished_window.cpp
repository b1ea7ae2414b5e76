// SPDX-License-Identifier: MIT
// The empty window with what the program's window shows beside, in plain Qt: four menus, a heading,
// a picture, three framed cards with a title, a button and wrapped texts, all in three fonts, and
// as large as the program's. Nothing is behind any of it. What it takes longer than the empty
// window is the price of showing all that.
//
//   hollin_furnished_window PICTURE WIDTH
#include <QApplication>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QProgressBar>
#include <QProxyStyle>
#include <QPushButton>
#include <QSvgRenderer>
#include <QVBoxLayout>
#include <cstdlib>

namespace {

// Every menu bar asks for a sign that it seldom shows. The program does not search the desktop's
// files for it either.
class SignlessStyle : public QProxyStyle {
 public:
  QIcon standardIcon(StandardPixmap /*icon*/, const QStyleOption* /*option*/,
                     const QWidget* /*widget*/) const override {
    return {};
  }
};

QPixmap Draw(const char* path, int width) {
  QSvgRenderer drawing{QString(path)};
  const QSize drawn = drawing.defaultSize();
  QPixmap pixmap(width, width * drawn.height() / drawn.width());
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  drawing.render(&painter);
  return pixmap;
}

QLabel* Text(const char* text, double size = 1, QFont::Weight weight = QFont::Normal) {
  auto* const label = new QLabel(text);
  label->setWordWrap(true);
  QFont font = label->font();
  font.setPointSizeF(font.pointSizeF() * size);
  font.setWeight(weight);
  label->setFont(font);
  return label;
}

void AddMenus(QMenuBar& bar) {
  for (const char* name : {"&File", "&Edit", "&Keyboard", "&Help"}) {
    QMenu* const menu = bar.addMenu(name);
    for (const char* action : {"First", "Second"}) menu->addAction(action);
  }
}

QLayout* Heading(QLabel* picture) {
  auto* const texts = new QVBoxLayout;
  texts->addWidget(Text("Update your keyboard", 1.7, QFont::DemiBold));
  texts->addWidget(Text("Three steps. Leave the keyboard connected until the last one is done."));
  auto* const row = new QHBoxLayout;
  row->addLayout(texts, 1);
  row->addWidget(picture);
  return row;
}

QGridLayout* AddCard(QVBoxLayout& column, const char* number, const char* title,
                     const char* button) {
  auto* const card = new QFrame;
  card->setFrameShape(QFrame::StyledPanel);
  card->setBackgroundRole(QPalette::Base);
  card->setAutoFillBackground(true);
  auto* const grid = new QGridLayout(card);
  grid->setColumnStretch(1, 1);
  grid->addWidget(Text(number, 1.15, QFont::DemiBold), 0, 0);
  grid->addWidget(Text(title, 1.15, QFont::DemiBold), 0, 1, 1, 2);
  grid->addWidget(new QPushButton(button), 0, 3);
  column.addWidget(card);
  return grid;
}

void AddCards(QVBoxLayout& column) {
  QGridLayout* const package = AddCard(column, "1", "Choose the update package", "Open");
  package->addWidget(new QLineEdit("Press Open, or drop an update package here."), 1, 1, 1, 3);
  package->addWidget(Text("Product model"), 2, 1);
  package->addWidget(Text("Firmware version"), 2, 2, 1, 2);
  package->addWidget(Text("None"), 3, 1);
  package->addWidget(Text("None"), 3, 2, 1, 2);
  QGridLayout* const keyboard = AddCard(column, "2", "Connect the keyboard", "Refresh");
  keyboard->addWidget(Text("Comes after the package, which says how to switch it on."), 1, 1, 1, 3);
  QGridLayout* const update = AddCard(column, "3", "Update the keyboard", "Update");
  update->addWidget(new QProgressBar, 1, 1, 1, 3);
  update->addWidget(Text(""), 2, 1, 1, 3);
}

}  // namespace

int main(int argc, char** argv) {
  const QApplication application(argc, argv);
  if (argc != 3) return 2;
  QApplication::setStyle(new SignlessStyle);
  QMainWindow window;
  AddMenus(*window.menuBar());
  auto* const content = new QWidget;
  auto* const column = new QVBoxLayout(content);
  auto* const picture = new QLabel;
  picture->setPixmap(Draw(argv[1], std::atoi(argv[2])));
  column->addLayout(Heading(picture));
  AddCards(*column);
  window.setCentralWidget(content);
  window.resize(720, 535);
  window.show();
  return QApplication::exec();
}
