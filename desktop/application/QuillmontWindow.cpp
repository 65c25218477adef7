#include "desktop/application/QuillmontWindow.h"

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
