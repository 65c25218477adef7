#include "desktop/application/DayChart.h"

#include <algorithm>
#include <cmath>

#include <QPainter>
#include <QPainterPath>

namespace quillmont {
namespace {

bool isDark(const QColor& background) { return background.lightnessF() < 0.5; }

QString hoursText(double hours) {
  const long minutes = std::lround(std::abs(hours) * 60.0);
  return QString("%1%2:%3").arg(hours < 0 ? QString::fromUtf8("\u2212") : (hours > 0 ? "+" : ""))
      .arg(minutes / 60)
      .arg(minutes % 60, 2, 10, QChar('0'));
}

}  // namespace

DayChart::DayChart(QWidget* parent) : QWidget(parent) {
  setAccessibleName("Difference by day");
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
  setFocusPolicy(Qt::TabFocus);
  describe();
}

QColor DayChart::creditColor(const QColor& background) {
  return isDark(background) ? QColor(0x8f, 0xd8, 0x9a) : QColor(0x1a, 0x73, 0x2e);
}

QColor DayChart::debitColor(const QColor& background) {
  return isDark(background) ? QColor(0xff, 0x9a, 0x8f) : QColor(0xb3, 0x26, 0x1e);
}

void DayChart::setBars(std::vector<Bar> bars, double lower, double upper) {
  bars_ = std::move(bars);
  lower_ = std::min(lower, 0.0);
  upper_ = std::max(upper, 0.0);
  if (upper_ - lower_ <= 0) upper_ = lower_ + 1;
  describe();
  update();
}

void DayChart::describe() {
  if (bars_.empty()) {
    setAccessibleDescription("No days to chart.");
    return;
  }
  const auto [low, high] = std::minmax_element(bars_.begin(), bars_.end(),
                                               [](const Bar& a, const Bar& b) { return a.hours < b.hours; });
  QString text = QString("%1 days.").arg(bars_.size());
  if (high->hours > 0) text += QString(" Largest credit %1 on %2.").arg(hoursText(high->hours), high->label);
  if (low->hours < 0) text += QString(" Largest debit %1 on %2.").arg(hoursText(low->hours), low->label);
  setAccessibleDescription(text);
}

QSize DayChart::sizeHint() const { return {480, fontMetrics().height() * 10}; }
QSize DayChart::minimumSizeHint() const { return {160, fontMetrics().height() * 6}; }

void DayChart::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const QPalette& colors = palette();
  const QColor background = colors.color(QPalette::Base);
  const QFontMetrics metrics = fontMetrics();
  const int axisWidth = metrics.horizontalAdvance(hoursText(-std::max(std::abs(lower_), std::abs(upper_)))) + 8;
  const QRectF plot(axisWidth, metrics.height() / 2.0, width() - axisWidth - 4, height() - metrics.height() * 2.0);
  if (plot.width() <= 0 || plot.height() <= 0) return;
  const auto y = [&](double hours) { return plot.top() + (upper_ - hours) / (upper_ - lower_) * plot.height(); };

  painter.setPen(colors.color(QPalette::PlaceholderText));
  painter.drawText(QRectF(0, y(upper_) - metrics.height() / 2.0, axisWidth - 6, metrics.height()),
                   Qt::AlignRight | Qt::AlignVCenter, hoursText(upper_));
  if (lower_ < 0) {
    painter.drawText(QRectF(0, y(lower_) - metrics.height() / 2.0, axisWidth - 6, metrics.height()),
                     Qt::AlignRight | Qt::AlignVCenter, hoursText(lower_));
  }
  painter.setPen(QPen(colors.color(QPalette::Mid), 1));
  painter.drawLine(QPointF(plot.left(), y(0)), QPointF(plot.right(), y(0)));

  if (bars_.empty()) return;
  const double slot = plot.width() / static_cast<double>(bars_.size());
  const double barWidth = std::clamp(slot * 0.7, 1.0, metrics.height() * 2.5);
  // Labels only where they fit: every n-th day.
  const int labelWidth = metrics.horizontalAdvance("00") + 6;
  const int every = std::max(1, static_cast<int>(std::ceil(labelWidth / std::max(slot, 1.0))));
  for (std::size_t i = 0; i < bars_.size(); ++i) {
    const Bar& bar = bars_[i];
    const double left = plot.left() + slot * static_cast<double>(i) + (slot - barWidth) / 2.0;
    const double top = y(std::clamp(bar.hours, lower_, upper_));
    const QRectF rect(QPointF(left, std::min(top, y(0))), QPointF(left + barWidth, std::max(top, y(0))));
    if (bar.today) {
      painter.fillRect(QRectF(plot.left() + slot * static_cast<double>(i), plot.top(), slot, plot.height()),
                       colors.color(QPalette::AlternateBase));
    }
    painter.fillRect(rect, bar.hours >= 0 ? creditColor(background) : debitColor(background));
    if (bar.today) {
      painter.setPen(QPen(colors.color(QPalette::Highlight), 2));
      painter.drawLine(QPointF(left, plot.bottom() + 2), QPointF(left + barWidth, plot.bottom() + 2));
    }
    if (static_cast<int>(i) % every == 0 || bar.today) {
      painter.setPen(bar.today ? colors.color(QPalette::Text) : colors.color(QPalette::PlaceholderText));
      QFont font = painter.font();
      font.setBold(bar.today);
      painter.setFont(font);
      painter.drawText(QRectF(plot.left() + slot * static_cast<double>(i) - 20, plot.bottom() + 4, slot + 40,
                              metrics.height()),
                       Qt::AlignHCenter | Qt::AlignTop, bar.label);
    }
  }
}

}  // namespace quillmont
