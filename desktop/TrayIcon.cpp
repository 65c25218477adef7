#include "desktop/TrayIcon.h"

#include <QMenu>
#include <QPainter>
#include <QPixmap>
#include <any>
#include <exception>

#include "core/ledger/DurationFormatting.h"
#include "desktop/SymbolPainter.h"
#include "desktop/TimelineDriver.h"
#include "desktop/WidgetPalette.h"
#include "widget/AdjustTimeBankIntent.h"
#include "widget/TimeBankTimelineEntry.h"
#include "widget/TimeBankWidgetView.h"

namespace quillmont {

QIcon TrayIcon::leafIcon() {
  QIcon icon;
  for (const int side : {16, 22, 24, 32, 48, 64, 128}) {
    QPixmap pixmap(side, side);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    SymbolPainter::paint(painter, "leaf.fill", QRectF(0, 0, side, side), WidgetPalette::light().mint);
    painter.end();
    icon.addPixmap(pixmap);
  }
  return icon;
}

TrayIcon::TrayIcon(TimelineDriver& driver, QObject* parent)
    : QObject(parent), driver_(driver), menu_(std::make_unique<QMenu>()) {
  icon_.setIcon(leafIcon());
  menu_->addAction("Add 60 minutes", this, [this] { adjust(60); });
  menu_->addAction("Subtract 60 minutes", this, [this] { adjust(-60); });
  menu_->addSeparator();
  menu_->addAction("Show the widget", this, [this] { emit showWidgetRequested(); });
  menu_->addAction("Open Quillmont", this, [this] { emit openRequested(); });
  menu_->addSeparator();
  menu_->addAction("Quit", this, [this] { emit quitRequested(); });
  icon_.setContextMenu(menu_.get());
  // A click on a status icon opens the program's window, as desktops
  // expect; the widget is on the desktop already, and the menu shows it.
  connect(&icon_, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
    if (reason == QSystemTrayIcon::Trigger) emit openRequested();
  });
  connect(&driver_, &TimelineDriver::entryChanged, this, [this] { update(); });
  update();
}

TrayIcon::~TrayIcon() = default;

void TrayIcon::setDisplay(ApplicationPreferences::TrayDisplay display) {
  display_ = display;
  update();
}

void TrayIcon::update() {
  const auto* entry = std::any_cast<TimeBankTimelineEntry>(&driver_.entry().entry);
  if (entry == nullptr || !entry->snapshot.isConfigured) {
    icon_.setToolTip("Quillmont\nSet up your time bank");
    return;
  }
  using Display = ApplicationPreferences::TrayDisplay;
  std::string tip = "Quillmont";
  if (display_ != Display::icon) tip = "Time bank " + DurationFormatting::clock(entry->snapshot.balanceSeconds, true);
  if (display_ == Display::balanceAndToday) tip += "\n" + TimeBankWidgetView::todayText(entry->snapshot);
  icon_.setToolTip(QString::fromStdString(tip));
}

void TrayIcon::adjust(int minutes) {
  try {
    const auto result = AdjustTimeBankIntent(minutes).adjust();
    driver_.reload();
    icon_.showMessage("Quillmont", QString::fromStdString(result.dialog), leafIcon(), 2500);
  } catch (const std::exception& error) {
    icon_.showMessage("Quillmont", QString::fromUtf8(error.what()), QSystemTrayIcon::Warning, 4000);
  }
}

}  // namespace quillmont
