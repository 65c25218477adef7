// WidgetWindow: one widget on the desktop: a frameless, translucent window
// of the family's size, kept below normal windows where the window manager
// allows it, drawn from its TimelineDriver's entry. Where no compositing
// manager draws transparency the window is shaped to its rounded container.
// A press on a button runs the button's intent on the GUI thread and shows
// the intent's dialog (or the error's own words) above the buttons for as
// long as it takes to read, or until a click on it or Escape; a click
// anywhere else asks for the widget's link to be opened; dragging moves the
// window, and the place is remembered for the instance. Screen readers find
// the balance and the buttons by the tree's accessibility texts.
#pragma once

#include <QPoint>
#include <QRectF>
#include <QRegion>
#include <QString>
#include <QTimer>
#include <QUrl>
#include <QWidget>
#include <memory>
#include <optional>
#include <vector>

#include "desktop/TimelineDriver.h"
#include "desktop/WidgetLayout.h"
#include "desktop/WidgetPalette.h"

class QAbstractButton;

namespace quillmont {

class WidgetWindow final : public QWidget {
  Q_OBJECT

 public:
  /// How long an action's dialog stays: four seconds, longer for a text
  /// that takes longer to read, at most twelve.
  static int messageMilliseconds(const QString& message);
  /// The window's shape: nothing (the whole window) where a compositor
  /// draws the transparent corners, else the rounded container.
  static QRegion shapeFor(QSize size, bool composited);

  WidgetWindow(TimelineDriver& driver, QString instance, QWidget* parent = nullptr);
  ~WidgetWindow() override;

  const WidgetLayout& layout() const { return layout_; }
  const QString& message() const { return message_; }
  /// Where the dialog stands; empty when none shows.
  QRectF messageFrame() const;
  bool isMessageTimerActive() const { return messageTimer_.isActive(); }
  /// Whether a compositor draws the transparent corners (asked of the
  /// desktop at first); without one the window is shaped.
  void setComposited(bool composited);
  /// Runs a button's intent as a click on it does.
  void press(const PlacedItem& button);

 signals:
  /// A click outside the buttons: the widget's link.
  void linkActivated(const QUrl& url);
  /// A frame was drawn.
  void painted();
  /// An intent ran (successfully or not); the dialog is on screen.
  void intentFinished(const QString& dialog, bool succeeded);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void entryChanged();
  void rebuildAccessibility();
  void showMessage(const QString& text);
  void dismissMessage();

  TimelineDriver& driver_;
  QString instance_;
  bool composited_;
  WidgetPalette palette_;
  WidgetLayout layout_;
  QString message_;
  QTimer messageTimer_;
  std::vector<QAbstractButton*> accessible_;
  std::optional<QPoint> pressedAt_;  // global position of a press in progress
  QPoint windowAtPress_;
  bool dragging_ = false;
};

}  // namespace quillmont
