// TrayIcon: the time bank in the desktop's system tray, where there is one:
// the leaf icon, a tooltip with what the person chose to see (nothing more
// than the name, the balance, or the balance and today's change), and a menu
// to add or subtract 60 minutes, show the widget, open Quillmont or quit.
#pragma once

#include <QObject>
#include <QSystemTrayIcon>
#include <memory>

#include "app/preferences/ApplicationPreferences.h"

class QMenu;

namespace quillmont {

class TimelineDriver;

class TrayIcon final : public QObject {
  Q_OBJECT

 public:
  explicit TrayIcon(TimelineDriver& driver, QObject* parent = nullptr);
  ~TrayIcon() override;

  QString toolTip() const { return icon_.toolTip(); }
  void show() { icon_.show(); }
  void hide() { icon_.hide(); }
  bool isVisible() const { return icon_.isVisible(); }
  /// What the tooltip shows; the icon alone shows only the program's name.
  void setDisplay(ApplicationPreferences::TrayDisplay display);

  /// The leaf, drawn by the program, at `side` pixels.
  static QIcon leafIcon();

 signals:
  void showWidgetRequested();
  void openRequested();
  void quitRequested();

 private:
  void update();
  void adjust(int minutes);

  TimelineDriver& driver_;
  ApplicationPreferences::TrayDisplay display_ = ApplicationPreferences::TrayDisplay::balanceAndToday;
  QSystemTrayIcon icon_;
  std::unique_ptr<QMenu> menu_;
};

}  // namespace quillmont
