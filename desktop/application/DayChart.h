// DayChart: a bar for each day's difference of a report, above the zero line
// for a credit and below it for a debit, over the report's chart hour range;
// today's bar is marked. It describes itself in words for screen readers
// (the days, the largest credit and debit).
#pragma once

#include <optional>
#include <vector>

#include <QColor>
#include <QWidget>

#include "platform/foundation/Date.h"

namespace quillmont {

class DayChart final : public QWidget {
  Q_OBJECT

 public:
  struct Bar {
    QString label;  ///< the day's short name under the bar
    double hours = 0;
    bool today = false;
  };

  explicit DayChart(QWidget* parent = nullptr);

  /// The bars over hours `lower` to `upper` (lower <= 0 <= upper).
  void setBars(std::vector<Bar> bars, double lower, double upper);
  const std::vector<Bar>& bars() const { return bars_; }
  double lowerHours() const { return lower_; }
  double upperHours() const { return upper_; }

  /// The accents against a background: a green for credit, a red for debit,
  /// dark on a light background and light on a dark one.
  static QColor creditColor(const QColor& background);
  static QColor debitColor(const QColor& background);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  void describe();

  std::vector<Bar> bars_;
  double lower_ = 0;
  double upper_ = 1;
};

}  // namespace quillmont
