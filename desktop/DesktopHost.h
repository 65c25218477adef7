// DesktopHost: the running desktop program: the widget window of one
// instance with its right-click menu, the tray icon where the desktop has a
// tray, the Quillmont window that links open, and the single-instance
// channel through which other processes hand it links.
#pragma once

#include <QObject>
#include <QString>
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
  };

  explicit DesktopHost(Options options, QObject* parent = nullptr);
  ~DesktopHost() override;

  /// Opens a quillmont:// link in the Quillmont window; false for a link
  /// that names no page.
  bool openLink(const QString& url);
  /// Shows the widget window (creating it where it stood last time).
  void showWidget();

  WidgetWindow* widgetWindow() const { return widgetWindow_.get(); }
  QuillmontWindow* mainWindow() const { return mainWindow_.get(); }
  TimelineDriver& driver() { return driver_; }
  SingleInstance& instance() { return single_; }

 private:
  void setFamily(WidgetFamily family);

  Options options_;
  TimelineDriver driver_;
  SingleInstance single_;
  std::unique_ptr<WidgetWindow> widgetWindow_;
  std::unique_ptr<QuillmontWindow> mainWindow_;
  std::unique_ptr<TrayIcon> tray_;
};

}  // namespace quillmont
