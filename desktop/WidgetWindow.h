// WidgetWindow: one widget on the desktop: a frameless, translucent window
// of the family's size, kept below normal windows where the window manager
// allows it, drawn from its TimelineDriver's entry. A press on a button runs
// the button's intent on the GUI thread and shows the intent's dialog (or
// the error's own words) over the widget for a moment; a click anywhere
// else asks for the widget's link to be opened; dragging moves the window,
// and the place is remembered for the instance. Screen readers find the
// balance and the buttons by the tree's accessibility texts.
#pragma once

#include <QPoint>
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
  /// How long an action's dialog stays over the widget.
  static constexpr int messageMilliseconds = 2500;

  WidgetWindow(TimelineDriver& driver, QString instance, QWidget* parent = nullptr);
  ~WidgetWindow() override;

  const WidgetLayout& layout() const { return layout_; }
  const QString& message() const { return message_; }
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
  void changeEvent(QEvent* event) override;

 private:
  void entryChanged();
  void rebuildAccessibility();
  void showMessage(const QString& text);

  TimelineDriver& driver_;
  QString instance_;
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
