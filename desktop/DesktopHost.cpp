#include "desktop/DesktopHost.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QDesktopServices>
#include <QLocale>
#include <QScreen>
#include <QDateTime>

#include "app/preferences/ApplicationPreferences.h"
#include "core/persistence/AppRoute.h"
#include "desktop/application/Appearance.h"
#include "desktop/application/PreferenceChanges.h"
#include "desktop/application/QuillmontWindow.h"
#include "desktop/DesktopNotifications.h"
#include "desktop/ForgottenTimer.h"
#include "desktop/StopAtDialog.h"
#include "desktop/TrayIcon.h"
#include "desktop/WidgetWindow.h"
#include "desktop/WindowPlacement.h"
#include "widget/QuillmontWidgets.h"
#include "widget/TimeBankWidget.h"

namespace quillmont {
namespace {

WidgetConfiguration timeBankWidget() {
  auto widget = QuillmontWidgets().widget(TimeBankWidget().kind);
  return widget ? *widget : TimeBankWidget().body();
}

}  // namespace

DesktopHost::DesktopHost(Options options, QObject* parent)
    : QObject(parent), options_(std::move(options)), driver_(timeBankWidget(), options_.family) {
  connect(&single_, &SingleInstance::messageReceived, this, [this](const QString& message) {
    if (message.startsWith(openMessagePrefix)) openLink(message.mid(static_cast<qsizetype>(strlen(openMessagePrefix))));
    else if (message == showMessage) showMainWindow();
  });
  takeOver_.setInterval(takeOverMilliseconds);
  connect(&takeOver_, &QTimer::timeout, this, [this] {
    if (single_.listen()) {
      takeOver_.stop();
      showTray();
      watchTimer();
    }
  });
  connect(&PreferenceChanges::instance(), &PreferenceChanges::changed, this, &DesktopHost::applyPreferences);
  Appearance::apply(ApplicationPreferences().appearance());
  if (options_.showsWidget) showWidget();
}

DesktopHost::~DesktopHost() = default;

bool DesktopHost::listen() {
  if (single_.listen()) {
    showTray();
    watchTimer();
    return true;
  }
  if (options_.usesTray) takeOver_.start();
  return false;
}

void DesktopHost::applyPreferences() {
  const ApplicationPreferences preferences;
  Appearance::apply(preferences.appearance());
  if (!tray_) {
    if (single_.isListening()) showTray();
    return;
  }
  if (preferences.showsTray()) {
    tray_->setDisplay(preferences.trayDisplay());
    tray_->show();
  } else {
    tray_->hide();
  }
}

void DesktopHost::showTray() {
  if (tray_ || !options_.usesTray || !options_.trayAvailable()) return;
  const ApplicationPreferences preferences;
  if (!preferences.showsTray()) return;
  tray_ = std::make_unique<TrayIcon>(driver_);
  tray_->setDisplay(preferences.trayDisplay());
  connect(tray_.get(), &TrayIcon::showWidgetRequested, this, [this] { showWidget(); });
  connect(tray_.get(), &TrayIcon::openRequested, this, [this] { showMainWindow(); });
  connect(tray_.get(), &TrayIcon::quitRequested, qApp, &QCoreApplication::quit);
  tray_->show();
}

void DesktopHost::showWidget() {
  if (!widgetWindow_) {
    widgetWindow_ = std::make_unique<WidgetWindow>(driver_, options_.instance);
    connect(widgetWindow_.get(), &WidgetWindow::linkActivated, this, [this](const QUrl& url) {
      // Quillmont's own links open here at once; any other through the
      // desktop's URL opener.
      if (!openLink(url.toString())) QDesktopServices::openUrl(url);
    });
    widgetWindow_->setContextMenuPolicy(Qt::ActionsContextMenu);
    auto* open = new QAction("Open Quillmont", widgetWindow_.get());
    connect(open, &QAction::triggered, this, [this] { showMainWindow(); });
    auto* sizes = new QActionGroup(widgetWindow_.get());
    for (const WidgetFamily family : {WidgetFamily::systemSmall, WidgetFamily::systemMedium}) {
      auto* size = new QAction(family == WidgetFamily::systemSmall ? "Small" : "Medium", sizes);
      size->setCheckable(true);
      size->setChecked(family == driver_.family());
      connect(size, &QAction::triggered, this, [this, family] { setFamily(family); });
    }
    auto* quit = new QAction("Quit", widgetWindow_.get());
    connect(quit, &QAction::triggered, qApp, &QCoreApplication::quit);
    widgetWindow_->addAction(open);
    widgetWindow_->addActions(sizes->actions());
    widgetWindow_->addAction(quit);

    if (const auto placement = WindowPlacement::load(options_.instance)) {
      widgetWindow_->move(placement->position);
    } else if (const QScreen* screen = QGuiApplication::primaryScreen()) {
      // A new widget starts near the top-right corner of the screen, clear
      // of the other widgets, and keeps that place, so that the next new
      // one finds it taken.
      const QPoint place = WindowPlacement::placeNew(options_.instance, widgetWindow_->size(), screen->availableGeometry());
      widgetWindow_->move(place);
      WindowPlacement{place, driver_.family()}.save(options_.instance);
    }
  }
  widgetWindow_->show();
}

void DesktopHost::setFamily(WidgetFamily family) {
  driver_.setFamily(family);
  if (widgetWindow_) WindowPlacement{widgetWindow_->pos(), family}.save(options_.instance);
}

void DesktopHost::showMainWindow() {
  if (mainWindow_ && mainWindow_->isVisible()) {
    mainWindow_->open(mainWindow_->currentRoute());
    return;
  }
  ensureMainWindow();
  mainWindow_->openLast();
}

bool DesktopHost::openLink(const QString& url) {
  const auto route = AppRoute::fromURL(url.toStdString());
  if (!route) return false;
  ensureMainWindow();
  mainWindow_->open(*route);
  return true;
}

void DesktopHost::ensureMainWindow() {
  if (!mainWindow_) {
    mainWindow_ = std::make_unique<QuillmontWindow>();
    connect(&driver_, &TimelineDriver::entryChanged, mainWindow_.get(), [this] {
      if (mainWindow_->isVisible()) mainWindow_->refresh();
    });
    connect(mainWindow_.get(), &QuillmontWindow::closed, this, &DesktopHost::windowClosed, Qt::QueuedConnection);
  }
}

void DesktopHost::watchTimer() {
  if (forgotten_) return;
  forgotten_ = std::make_unique<ForgottenTimer>();
  notifications_ = std::make_unique<DesktopNotifications>();
  connect(forgotten_.get(), &ForgottenTimer::forgotten, this, &DesktopHost::timerForgotten);
  connect(&driver_, &TimelineDriver::entryChanged, forgotten_.get(), [this] {
    // The timer may have stopped elsewhere: its notice no longer applies.
    notifications_->close(forgottenNotice_);
    forgottenNotice_ = 0;
    forgotten_->check();
  });
  connect(notifications_.get(), &DesktopNotifications::actionInvoked, this, [this](unsigned id, const QString& action) {
    if (id != forgottenNotice_ || id == 0) return;
    if (action == "stop-now") {
      const QString refused = ForgottenTimer::stopNow();
      if (!refused.isEmpty()) notifications_->notify("The timer was not stopped", refused);
      driver_.reload();
    } else if (action == "stop-at") {
      auto* dialog = new StopAtDialog;
      dialog->setAttribute(Qt::WA_DeleteOnClose);
      connect(dialog, &QDialog::accepted, &driver_, &TimelineDriver::reload);
      dialog->show();
      dialog->raise();
      dialog->activateWindow();
    }
  });
  forgotten_->check();
}

void DesktopHost::timerForgotten(Date since, int hours) {
  const QDateTime started = QDateTime::fromSecsSinceEpoch(static_cast<qint64>(since.timeIntervalSince1970()));
  const QString body = QString("The timer started %1 at %2 is still running.")
                           .arg(started.date() == QDate::currentDate() ? "today" : QLocale().toString(started.date(), QLocale::ShortFormat),
                                started.time().toString("HH:mm"));
  forgottenNotice_ = notifications_->notify(
      QString("Timer running for more than %1 hour%2").arg(hours).arg(hours == 1 ? "" : "s"), body,
      {"stop-now", "Stop now", "stop-at", QString::fromUtf8("Stop at…")});
}

void DesktopHost::windowClosed() {
  if (!options_.quitsWithWindow) return;
  if (widgetWindow_ && widgetWindow_->isVisible()) return;
  if (tray_ && tray_->isVisible() && ApplicationPreferences().closesToTray()) return;
  QCoreApplication::quit();
}

}  // namespace quillmont
