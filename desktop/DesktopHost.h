// DesktopHost: the running desktop program: the widget window of one
// instance with its right-click menu, the Quillmont window that links open,
// and the single-instance channel through which other processes hand it
// links. Several instances (widget windows) may run, each in its own
// process; the one that holds the channel shows the tray icon, where the
// desktop has a tray, so there is one icon for the program. When that one
// quits, another takes the channel and the icon over.
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

class QuillmontWindow;
class TrayIcon;
class WidgetWindow;

class DesktopHost final : public QObject {
  Q_OBJECT

 public:
  /// The message by which another process asks for a link to be opened.
  static constexpr const char* openMessagePrefix = "open ";

  struct Options {
    WidgetFamily family = WidgetFamily::systemSmall;
    QString instance = "small";
    bool showsWidget = true;
    bool usesTray = true;
    /// Whether the desktop has a tray (asked of Qt unless a test says).
    bool (*trayAvailable)() = &QSystemTrayIcon::isSystemTrayAvailable;
  };

  /// How often an instance without the channel tries to take it over.
  static constexpr int takeOverMilliseconds = 2000;

  explicit DesktopHost(Options options, QObject* parent = nullptr);
  ~DesktopHost() override;

  /// Opens a quillmont:// link in the Quillmont window; false for a link
  /// that names no page.
  bool openLink(const QString& url);
  /// Shows the widget window (creating it where it stood last time).
  void showWidget();
  /// Takes the single-instance channel and with it the tray icon; when
  /// another instance holds it, keeps trying to take both over. True when
  /// this instance holds the channel now.
  bool listen();

  WidgetWindow* widgetWindow() const { return widgetWindow_.get(); }
  QuillmontWindow* mainWindow() const { return mainWindow_.get(); }
  TimelineDriver& driver() { return driver_; }
  SingleInstance& instance() { return single_; }
  TrayIcon* trayIcon() const { return tray_.get(); }

 private:
  void setFamily(WidgetFamily family);
  void showTray();

  Options options_;
  TimelineDriver driver_;
  SingleInstance single_;
  std::unique_ptr<WidgetWindow> widgetWindow_;
  std::unique_ptr<QuillmontWindow> mainWindow_;
  std::unique_ptr<TrayIcon> tray_;
  QTimer takeOver_;
};

}  // namespace quillmont
