#include "desktop/application/QuillmontWindow.h"

#include <QAction>
#include <QKeySequence>
#include <QTabWidget>

#include "desktop/application/HistoryPage.h"
#include "desktop/application/OverviewPage.h"
#include "desktop/application/ReportsPage.h"
#include "desktop/application/SettingsPage.h"

namespace quillmont {

QuillmontWindow::QuillmontWindow(QWidget* parent)
    : QMainWindow(parent),
      tabs_(new QTabWidget(this)),
      overview_(new OverviewPage(tabs_)),
      history_(new HistoryPage(tabs_)),
      reports_(new ReportsPage(tabs_)),
      settings_(new SettingsPage(tabs_)) {
  setWindowTitle("Quillmont");
  tabs_->setDocumentMode(true);
  tabs_->setAccessibleName("Pages");
  for (const AppRoute route : AppRoute::allCases()) {
    Page* shown = nullptr;
    switch (route.value()) {
      case AppRoute::overview: shown = overview_; break;
      case AppRoute::history: shown = history_; break;
      case AppRoute::reports: shown = reports_; break;
      case AppRoute::settings: shown = settings_; break;
    }
    const QString title = QString::fromUtf8(route.title().data(), static_cast<qsizetype>(route.title().size()));
    shown->setAccessibleName(title);
    tabs_->addTab(shown, title);
    pages_.push_back(shown);
  }
  current_.assign(pages_.size(), false);
  // Ctrl+1 to Ctrl+4 go to the pages, F5 reads the page on show again,
  // Ctrl+W closes the window (the program keeps running in its widget).
  for (const AppRoute route : AppRoute::allCases()) {
    auto* go = new QAction(tabs_->tabText(static_cast<int>(route.value())), this);
    go->setShortcut(QKeySequence(Qt::CTRL | static_cast<Qt::Key>(Qt::Key_1 + static_cast<int>(route.value()))));
    connect(go, &QAction::triggered, this, [this, route] { tabs_->setCurrentIndex(static_cast<int>(route.value())); });
    addAction(go);
  }
  auto* reload = new QAction("Reload", this);
  reload->setShortcut(QKeySequence::Refresh);
  connect(reload, &QAction::triggered, this, &QuillmontWindow::refresh);
  addAction(reload);
  auto* closing = new QAction("Close", this);
  closing->setShortcut(QKeySequence::Close);
  connect(closing, &QAction::triggered, this, &QWidget::close);
  addAction(closing);
  setCentralWidget(tabs_);
  resize(820, 600);
  connect(tabs_, &QTabWidget::currentChanged, this, [this](int index) {
    if (index < 0 || current_[static_cast<std::size_t>(index)]) return;
    pages_[static_cast<std::size_t>(index)]->refresh();
    current_[static_cast<std::size_t>(index)] = true;
  });
}

Page& QuillmontWindow::page(AppRoute route) const { return *pages_[static_cast<std::size_t>(route.value())]; }

void QuillmontWindow::open(AppRoute route) {
  const int index = static_cast<int>(route.value());
  // A link always shows the page as it is now.
  current_[static_cast<std::size_t>(index)] = false;
  if (tabs_->currentIndex() == index) {
    pages_[static_cast<std::size_t>(index)]->refresh();
    current_[static_cast<std::size_t>(index)] = true;
  }
  tabs_->setCurrentIndex(index);
  show();
  setWindowState((windowState() & ~Qt::WindowMinimized) | Qt::WindowActive);
  raise();
  activateWindow();
}

AppRoute QuillmontWindow::currentRoute() const {
  return AppRoute::allCases()[static_cast<std::size_t>(tabs_->currentIndex())];
}

void QuillmontWindow::refresh() {
  current_.assign(pages_.size(), false);
  const int index = tabs_->currentIndex();
  if (index < 0) return;
  pages_[static_cast<std::size_t>(index)]->refresh();
  current_[static_cast<std::size_t>(index)] = true;
}

}  // namespace quillmont
