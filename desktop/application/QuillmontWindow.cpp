#include "desktop/application/QuillmontWindow.h"

#include <exception>

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QKeySequence>
#include <QScreen>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTabWidget>
#include <QTimeZone>

#include "app/Refusal.h"
#include "app/housekeeping/Housekeeping.h"
#include "app/preferences/ApplicationPreferences.h"
#include "app/session/StoreSession.h"
#include "desktop/application/HistoryPage.h"
#include "desktop/application/OverviewPage.h"
#include "desktop/application/ReportsPage.h"
#include "desktop/application/SettingsPage.h"
#include "desktop/application/SetupForm.h"
#include "desktop/application/WindowRemedies.h"

namespace quillmont {

QuillmontWindow::QuillmontWindow(QWidget* parent)
    : QMainWindow(parent),
      stack_(new QStackedWidget(this)),
      tabs_(new QTabWidget(stack_)),
      setup_(new SetupForm(stack_)),
      overview_(new OverviewPage(tabs_)),
      history_(new HistoryPage(tabs_)),
      reports_(new ReportsPage(tabs_)),
      settings_(new SettingsPage(tabs_)),
      undo_(new QAction("Undo", this)) {
  setWindowTitle("Quillmont");
  tabs_->setDocumentMode(true);
  tabs_->setAccessibleName("Pages");
  setup_->setAccessibleName("Set up");
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
  stack_->addWidget(tabs_);
  stack_->addWidget(setup_);
  setCentralWidget(stack_);
  statusBar()->setSizeGripEnabled(true);

  for (const AppRoute route : AppRoute::allCases()) {
    auto* go = new QAction(tabs_->tabText(static_cast<int>(route.value())), this);
    go->setShortcut(QKeySequence(Qt::CTRL | static_cast<Qt::Key>(Qt::Key_1 + static_cast<int>(route.value()))));
    connect(go, &QAction::triggered, this, [this, route] { goTo(route); });
    addAction(go);
  }
  auto* booking = new QAction("New booking", this);
  booking->setShortcut(QKeySequence::New);
  connect(booking, &QAction::triggered, this, [this] {
    if (showsSetup()) return;
    goTo(AppRoute::overview);
    overview_->focusBookingForm();
  });
  addAction(booking);
  auto* filter = new QAction("Filter activity", this);
  filter->setShortcut(QKeySequence::Find);
  connect(filter, &QAction::triggered, this, [this] {
    if (showsSetup()) return;
    goTo(AppRoute::history);
    history_->focusFilter();
  });
  addAction(filter);
  undo_->setShortcut(QKeySequence::Undo);
  undo_->setToolTip("Take back the last change (Ctrl+Z)");
  connect(undo_, &QAction::triggered, this, &QuillmontWindow::undo);
  addAction(undo_);
  auto* reload = new QAction("Reload", this);
  reload->setShortcut(QKeySequence::Refresh);
  connect(reload, &QAction::triggered, this, &QuillmontWindow::refresh);
  addAction(reload);
  // Ctrl+W closes the window (the program may keep running in its widget
  // or tray); Ctrl+Q ends the program.
  auto* closing = new QAction("Close", this);
  closing->setShortcut(QKeySequence::Close);
  connect(closing, &QAction::triggered, this, &QWidget::close);
  addAction(closing);
  auto* quitting = new QAction("Quit", this);
  quitting->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
  connect(quitting, &QAction::triggered, qApp, &QCoreApplication::quit, Qt::QueuedConnection);
  addAction(quitting);

  resize(900, 640);
  if (const auto geometry = ApplicationPreferences().windowGeometry()) {
    const QRect kept(geometry->x, geometry->y, geometry->width, geometry->height);
    // A place on a screen that is no longer there is forgotten; the size is kept.
    const QScreen* screen = QGuiApplication::screenAt(kept.center());
    if (screen != nullptr) setGeometry(kept);
    else resize(kept.size().expandedTo(minimumSizeHint()));
  }

  connect(tabs_, &QTabWidget::currentChanged, this, [this](int index) {
    if (index < 0) return;
    if (remembers_) ApplicationPreferences().setLastRoute(AppRoute::allCases()[static_cast<std::size_t>(index)]);
    if (current_[static_cast<std::size_t>(index)]) return;
    pages_[static_cast<std::size_t>(index)]->refresh();
    current_[static_cast<std::size_t>(index)] = true;
  });
  connect(setup_, &SetupForm::completed, this, [this] {
    stack_->setCurrentWidget(tabs_);
    refresh();
  });
  dayChange_.setSingleShot(true);
  connect(&dayChange_, &QTimer::timeout, this, [this] {
    if (isVisible()) refresh();
    else current_.assign(pages_.size(), false);
    scheduleDayChange();
  });
  scheduleDayChange();
}

QuillmontWindow::~QuillmontWindow() = default;

qint64 QuillmontWindow::millisecondsToNextDay(const QDateTime& now) {
  const QDateTime midnight(now.date().addDays(1), QTime(0, 0), now.timeZone());
  // A second past midnight, so that the new day has surely begun.
  return now.msecsTo(midnight) + 1000;
}

void QuillmontWindow::scheduleDayChange() {
  dayChange_.start(static_cast<int>(millisecondsToNextDay(QDateTime::currentDateTime())));
}

Page& QuillmontWindow::page(AppRoute route) const { return *pages_[static_cast<std::size_t>(route.value())]; }

bool QuillmontWindow::checkSetup() {
  bool setUp = true;
  try {
    StoreSession session;
    setUp = session.settings().hasCompletedOnboarding();
    if (!setUp && stack_->currentWidget() != setup_) setup_->load(session);
  } catch (const std::exception&) {
    // The pages say why the store cannot be read.
  }
  stack_->setCurrentWidget(setUp ? static_cast<QWidget*>(tabs_) : setup_);
  return setUp;
}

bool QuillmontWindow::showsSetup() const { return stack_->currentWidget() == setup_; }

void QuillmontWindow::goTo(AppRoute route) {
  if (showsSetup()) return;
  tabs_->setCurrentIndex(static_cast<int>(route.value()));
}

void QuillmontWindow::open(AppRoute route) {
  checkSetup();
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

void QuillmontWindow::openLast() { open(ApplicationPreferences().lastRoute()); }

AppRoute QuillmontWindow::currentRoute() const {
  return AppRoute::allCases()[static_cast<std::size_t>(tabs_->currentIndex())];
}

QString QuillmontWindow::statusText() const { return statusBar()->currentMessage(); }

void QuillmontWindow::refresh() {
  current_.assign(pages_.size(), false);
  if (!checkSetup()) return;
  const int index = tabs_->currentIndex();
  if (index < 0) return;
  pages_[static_cast<std::size_t>(index)]->refresh();
  current_[static_cast<std::size_t>(index)] = true;
}

void QuillmontWindow::undo() {
  QString said;
  try {
    StoreSession session;
    const auto action = Housekeeping::undo(session);
    said = "Undid " + QString::fromStdString(action.name) + ".";
  } catch (const std::exception& refused) {
    said = WindowRemedies::message(refused);
  }
  statusBar()->showMessage(said, 8000);
  refresh();
}

void QuillmontWindow::rememberGeometry() const {
  if (!remembers_ || isMaximized() || isFullScreen()) return;
  const QRect kept = geometry();
  ApplicationPreferences().setWindowGeometry({kept.x(), kept.y(), kept.width(), kept.height()});
}

void QuillmontWindow::closeEvent(QCloseEvent* event) {
  rememberGeometry();
  event->accept();
  emit closed();
}

}  // namespace quillmont
