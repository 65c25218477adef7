// DesktopHost: the running desktop program: the widget window of one
// instance with its right-click menu, the Quillmont window that links open,
// and the single-instance channel through which other processes hand it
// links. Several instances (widget windows) may run, each in its own
// process; the one that holds the channel shows the tray icon, where the
// desktop has a tray, so there is one icon for the program. When that one
// quits, another takes the channel and the icon over.
//
// The application's preferences take effect here: whether the tray icon
// shows and what its tooltip tells, the appearance, and whether closing the
// Quillmont window keeps the program running in its tray (else it ends once
// no widget window is left). The window opens the page of a link directly,
// whether the link comes from this instance's widget or tray or from another
// process through the channel. The instance with the channel also watches
// for a forgotten timer and offers to stop it in a desktop notification.
#pragma once

#include <QObject>
#include <QString>
#include <QSystemTrayIcon>
#include <QTimer>
#include <memory>

#include "desktop/SingleInstance.h"
#include "desktop/TimelineDriver.h"
#include "platform/widgets/WidgetFamily.h"

namespace quillmont {

class DesktopNotifications;
class ForgottenTimer;
class QuillmontWindow;
class TrayIcon;
class WidgetWindow;

class DesktopHost final : public QObject {
  Q_OBJECT

 public:
  /// The message by which another process asks for a link to be opened.
  static constexpr const char* openMessagePrefix = "open ";
  /// The message by which another process asks for the window as it is.
  static constexpr const char* showMessage = "show";

  struct Options {
    WidgetFamily family = WidgetFamily::systemSmall;
    QString instance = "small";
    bool showsWidget = true;
    bool usesTray = true;
    /// Whether the desktop has a tray (asked of Qt unless a test says).
    bool (*trayAvailable)() = &QSystemTrayIcon::isSystemTrayAvailable;
    /// Whether closing the Quillmont window may end the program (it never
    /// does while a widget window shows, or the tray is kept by preference).
    bool quitsWithWindow = true;
  };

  /// How often an instance without the channel tries to take it over.
  static constexpr int takeOverMilliseconds = 2000;

  explicit DesktopHost(Options options, QObject* parent = nullptr);
  ~DesktopHost() override;

  /// Opens a quillmont:// link in the Quillmont window; false for a link
  /// that names no page.
  bool openLink(const QString& url);
  /// Raises the Quillmont window at its page, or opens it at the last one.
  void showMainWindow();
  /// Shows the widget window (creating it where it stood last time).
  void showWidget();
  /// Takes the single-instance channel and with it the tray icon; when
  /// another instance holds it, keeps trying to take both over. True when
  /// this instance holds the channel now.
  bool listen();
  /// Applies the application's preferences (appearance, tray) as stored now.
  void applyPreferences();

  WidgetWindow* widgetWindow() const { return widgetWindow_.get(); }
  QuillmontWindow* mainWindow() const { return mainWindow_.get(); }
  TimelineDriver& driver() { return driver_; }
  SingleInstance& instance() { return single_; }
  TrayIcon* trayIcon() const { return tray_.get(); }
  ForgottenTimer* forgottenTimer() const { return forgotten_.get(); }

 private:
  void setFamily(WidgetFamily family);
  void showTray();
  void windowClosed();
  /// Begins watching for a forgotten timer (the instance with the channel).
  void watchTimer();
  void timerForgotten(Date since, int hours);
  void ensureMainWindow();

  Options options_;
  TimelineDriver driver_;
  SingleInstance single_;
  std::unique_ptr<WidgetWindow> widgetWindow_;
  std::unique_ptr<QuillmontWindow> mainWindow_;
  std::unique_ptr<TrayIcon> tray_;
  std::unique_ptr<ForgottenTimer> forgotten_;
  std::unique_ptr<DesktopNotifications> notifications_;
  unsigned forgottenNotice_ = 0;
  QTimer takeOver_;
};

}  // namespace quillmont
