#include "desktop/QuillmontWindow.h"

#include <QFontDatabase>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTabWidget>

#include "desktop/CommandText.h"

namespace quillmont {

QuillmontWindow::QuillmontWindow(QWidget* parent) : QMainWindow(parent), tabs_(new QTabWidget(this)) {
  setWindowTitle("Quillmont");
  const QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
  for (const AppRoute route : AppRoute::allCases()) {
    const QString title = QString::fromUtf8(route.title().data(), static_cast<qsizetype>(route.title().size()));
    auto* text = new QPlainTextEdit(tabs_);
    text->setReadOnly(true);
    text->setFont(fixed);
    text->setLineWrapMode(QPlainTextEdit::NoWrap);
    text->setAccessibleName(title);
    tabs_->addTab(text, title);
    pages_.push_back(text);
  }
  setCentralWidget(tabs_);
  resize(760, 560);
  connect(tabs_, &QTabWidget::currentChanged, this, [this](int index) { refreshPage(index); });
}

void QuillmontWindow::open(AppRoute route) {
  const int index = static_cast<int>(route.value());
  if (tabs_->currentIndex() == index) refreshPage(index);
  tabs_->setCurrentIndex(index);
  show();
  setWindowState((windowState() & ~Qt::WindowMinimized) | Qt::WindowActive);
  raise();
  activateWindow();
}

AppRoute QuillmontWindow::currentRoute() const {
  return AppRoute::allCases()[static_cast<std::size_t>(tabs_->currentIndex())];
}

QString QuillmontWindow::pageText(AppRoute route) const {
  return pages_[static_cast<std::size_t>(route.value())]->toPlainText();
}

void QuillmontWindow::refresh() {
  for (int index = 0; index < static_cast<int>(pages_.size()); ++index) refreshPage(index);
}

void QuillmontWindow::refreshPage(int index) {
  if (index < 0 || index >= static_cast<int>(pages_.size())) return;
  const AppRoute route = AppRoute::allCases()[static_cast<std::size_t>(index)];
  const CommandText::Output output = CommandText::run({"open", QString::fromStdString(route.url())});
  QPlainTextEdit* page = pages_[static_cast<std::size_t>(index)];
  const int scrolled = page->verticalScrollBar() ? page->verticalScrollBar()->value() : 0;
  page->setPlainText(output.exitCode == 0 ? output.out : output.out + output.err);
  if (page->verticalScrollBar()) page->verticalScrollBar()->setValue(scrolled);
}

}  // namespace quillmont
