#include "desktop/WidgetWindow.h"

#include <QAbstractButton>
#include <QEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <exception>

#include "desktop/DesktopCompositing.h"

#include "desktop/WidgetPainter.h"
#include "desktop/WindowPlacement.h"

namespace quillmont {
namespace {

// A press that moves less than this is a click, not a drag.
constexpr int dragThreshold = 4;

// What a screen reader finds at a place of the widget: a button (which it
// can press) or a text with its value. The window draws it; this element
// only speaks for it and lets the mouse through.
class AccessibleElement final : public QAbstractButton {
 public:
  AccessibleElement(const AccessibleRegion& region, QWidget* parent) : QAbstractButton(parent) {
    setGeometry(region.frame.toAlignedRect());
    setAccessibleName(region.label);
    setAccessibleDescription(region.value);
    setText(region.value.isEmpty() ? region.label : region.label + ": " + region.value);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(region.isButton ? Qt::TabFocus : Qt::NoFocus);
    show();
  }

 protected:
  void paintEvent(QPaintEvent*) override {}
};

}  // namespace

int WidgetWindow::messageMilliseconds(const QString& message) {
  // About fifteen characters a second, after a second to notice it.
  return std::clamp(1000 + 70 * static_cast<int>(message.size()), 4000, 12000);
}

QRegion WidgetWindow::shapeFor(QSize size, bool composited) {
  if (composited || size.isEmpty()) return {};
  QPainterPath container;
  container.addRoundedRect(QRectF(QPointF(0, 0), QSizeF(size)), WidgetLayout::cornerRadius, WidgetLayout::cornerRadius);
  return QRegion(container.toFillPolygon().toPolygon());
}

WidgetWindow::WidgetWindow(TimelineDriver& driver, QString instance, QWidget* parent)
    : QWidget(parent, Qt::FramelessWindowHint | Qt::WindowStaysOnBottomHint | Qt::Tool),
      driver_(driver),
      instance_(std::move(instance)),
      composited_(DesktopCompositing::isActive()),
      palette_(WidgetPalette::matchingApplication()) {
  setAttribute(Qt::WA_TranslucentBackground);
  setWindowTitle("Quillmont");
  setFocusPolicy(Qt::ClickFocus);  // Escape dismisses a dialog
  setAccessibleName(QString::fromStdString(driver_.widget().displayName));
  messageTimer_.setSingleShot(true);
  connect(&messageTimer_, &QTimer::timeout, this, [this] { dismissMessage(); });
  connect(&driver_, &TimelineDriver::entryChanged, this, [this] { entryChanged(); });
  entryChanged();
}

WidgetWindow::~WidgetWindow() = default;

void WidgetWindow::entryChanged() {
  const QSizeF size = WidgetLayout::sizeOf(driver_.family());
  setFixedSize(size.toSize());
  layout_ = WidgetLayout(driver_.entry().content.root, size);
  rebuildAccessibility();
  update();
}

void WidgetWindow::rebuildAccessibility() {
  for (QAbstractButton* element : accessible_) delete element;
  accessible_.clear();
  for (const AccessibleRegion& region : layout_.accessibleRegions()) {
    auto* element = new AccessibleElement(region, this);
    if (region.isButton) {
      const QRectF frame = region.frame;
      connect(element, &QAbstractButton::clicked, this, [this, frame] {
        if (const PlacedItem* button = layout_.buttonAt(frame.center())) press(*button);
      });
    }
    accessible_.push_back(element);
  }
}

void WidgetWindow::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  WidgetPainter::paint(painter, layout_, driver_.entry().content.containerBackground, palette_);
  WidgetPainter::paintMessage(painter, layout_, message_, palette_);
  painter.end();
  emit painted();
}

void WidgetWindow::press(const PlacedItem& button) {
  if (!button.intent) return;
  QString dialog;
  bool succeeded = true;
  try {
    dialog = QString::fromStdString(button.intent->perform().dialog);
  } catch (const std::exception& error) {
    dialog = QString::fromUtf8(error.what());
    succeeded = false;
  } catch (...) {
    dialog = "The action failed.";
    succeeded = false;
  }
  // The intent asked every widget to reload; this one need not wait for
  // the notification to show its own press.
  driver_.reload();
  showMessage(dialog);
  emit intentFinished(dialog, succeeded);
}

void WidgetWindow::showMessage(const QString& text) {
  message_ = text;
  messageTimer_.start(messageMilliseconds(text));
  update();
}

void WidgetWindow::dismissMessage() {
  messageTimer_.stop();
  message_.clear();
  update();
}

QRectF WidgetWindow::messageFrame() const { return WidgetPainter::messageFrame(layout_, message_); }

void WidgetWindow::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape && !message_.isEmpty()) {
    dismissMessage();
    return;
  }
  QWidget::keyPressEvent(event);
}

void WidgetWindow::setComposited(bool composited) {
  composited_ = composited;
  const QRegion shape = shapeFor(size(), composited_);
  if (shape != mask()) shape.isEmpty() ? clearMask() : setMask(shape);
}

void WidgetWindow::resizeEvent(QResizeEvent* event) {
  setComposited(composited_);
  QWidget::resizeEvent(event);
}

void WidgetWindow::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  pressedAt_ = event->globalPosition().toPoint();
  windowAtPress_ = pos();
  dragging_ = false;
}

void WidgetWindow::mouseMoveEvent(QMouseEvent* event) {
  if (!pressedAt_) return;
  const QPoint moved = event->globalPosition().toPoint() - *pressedAt_;
  if (!dragging_ && moved.manhattanLength() < dragThreshold) return;
  dragging_ = true;
  move(windowAtPress_ + moved);
}

void WidgetWindow::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || !pressedAt_) return;
  pressedAt_.reset();
  if (dragging_) {
    dragging_ = false;
    WindowPlacement{pos(), driver_.family()}.save(instance_);
    return;
  }
  if (messageFrame().contains(event->position())) {
    dismissMessage();
  } else if (const PlacedItem* button = layout_.buttonAt(event->position())) {
    press(*button);
  } else if (const auto& url = driver_.entry().content.widgetURL) {
    emit linkActivated(QUrl(QString::fromStdString(url->absoluteString)));
  }
}

void WidgetWindow::changeEvent(QEvent* event) {
  if (event->type() == QEvent::PaletteChange || event->type() == QEvent::ApplicationPaletteChange) {
    palette_ = WidgetPalette::matchingApplication();
    update();
  }
  QWidget::changeEvent(event);
}

}  // namespace quillmont
