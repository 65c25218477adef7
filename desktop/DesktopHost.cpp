#include "desktop/DesktopHost.h"

#include <QAction>
#include <QActionGroup>
#include <QApplication>
#include <QDesktopServices>
#include <QScreen>

#include "core/persistence/AppRoute.h"
#include "desktop/application/QuillmontWindow.h"
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
  });
  takeOver_.setInterval(takeOverMilliseconds);
  connect(&takeOver_, &QTimer::timeout, this, [this] {
    if (single_.listen()) {
      takeOver_.stop();
      showTray();
    }
  });
  if (options_.showsWidget) showWidget();
}

DesktopHost::~DesktopHost() = default;

bool DesktopHost::listen() {
  if (single_.listen()) {
    showTray();
    return true;
  }
  if (options_.usesTray) takeOver_.start();
  return false;
}

void DesktopHost::showTray() {
  if (tray_ || !options_.usesTray || !options_.trayAvailable()) return;
  tray_ = std::make_unique<TrayIcon>(driver_);
  connect(tray_.get(), &TrayIcon::showWidgetRequested, this, [this] { showWidget(); });
  connect(tray_.get(), &TrayIcon::openRequested, this,
          [this] { openLink(QString::fromStdString(AppRoute(AppRoute::overview).url())); });
  connect(tray_.get(), &TrayIcon::quitRequested, qApp, &QCoreApplication::quit);
  tray_->show();
}

void DesktopHost::showWidget() {
  if (!widgetWindow_) {
    widgetWindow_ = std::make_unique<WidgetWindow>(driver_, options_.instance);
    connect(widgetWindow_.get(), &WidgetWindow::linkActivated, this, [](const QUrl& url) {
      // Through the desktop's URL opener, which reaches the installed
      // handler of quillmont:// links (this program, via its instance).
      QDesktopServices::openUrl(url);
    });
    widgetWindow_->setContextMenuPolicy(Qt::ActionsContextMenu);
    auto* open = new QAction("Open Quillmont", widgetWindow_.get());
    connect(open, &QAction::triggered, this, [this] { openLink(QString::fromStdString(AppRoute(AppRoute::overview).url())); });
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

bool DesktopHost::openLink(const QString& url) {
  const auto route = AppRoute::fromURL(url.toStdString());
  if (!route) return false;
  if (!mainWindow_) {
    mainWindow_ = std::make_unique<QuillmontWindow>();
    connect(&driver_, &TimelineDriver::entryChanged, mainWindow_.get(), [this] {
      if (mainWindow_->isVisible()) mainWindow_->refresh();
    });
  }
  mainWindow_->open(*route);
  return true;
}

}  // namespace quillmont
