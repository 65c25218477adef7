// ReportsPage: the calendar of the time bank: a week, month or year (moved
// back and forth) or any run of days; a chart of each day's difference, the
// day table with the sums, the bookings' totals by category, and the two
// CSV documents (the days, the ledger) written for the period shown.
#pragma once

#include <optional>

#include <QDate>

#include "app/input/DateInput.h"
#include "desktop/application/Page.h"
#include "platform/foundation/DateInterval.h"

class QComboBox;
class QDateEdit;
class QLabel;
class QStandardItemModel;
class QTableView;
class QToolButton;

namespace quillmont {

class DayChart;
class DayTableModel;

class ReportsPage final : public Page {
  Q_OBJECT

 public:
  /// The periods offered, in the order of the period list.
  enum Period { week, month, year, range };
  enum class Document { days, ledger };

  explicit ReportsPage(QWidget* parent = nullptr);

  QComboBox& period() const { return *period_; }
  QString title() const;
  DayTableModel& days() const { return *days_; }
  QStandardItemModel& categories() const { return *categories_; }
  DayChart& chart() const { return *chart_; }

  /// Shows the days from `from` through `to` (in either order).
  void showRange(const QDate& from, const QDate& to);
  /// Moves the period shown back (-1) or forth (+1) by its own length.
  void step(int direction);
  /// Back to the period around today.
  void showToday();

  /// Writes the document of the period shown to `path`; the refusal's text
  /// when it could not be written, empty when it was.
  QString exportTo(Document document, const QString& path);
  /// The line that says what the last export did.
  QString exportMessage() const;

 protected:
  void show(StoreSession& session) override;
  void clear() override;

 private:
  DateInterval interval(StoreSession& session) const;
  void chooseExport(Document document);
  void periodChosen();

  QComboBox* period_;
  QToolButton* previous_;
  QToolButton* next_;
  QToolButton* today_;
  QDateEdit* from_;
  QDateEdit* to_;
  QLabel* toLabel_;
  QToolButton* export_;
  QLabel* exportMessage_;
  QLabel* title_;
  QLabel* empty_;
  DayChart* chart_;
  DayTableModel* days_;
  QTableView* dayView_;
  QLabel* categoriesTitle_;
  QStandardItemModel* categories_;
  QTableView* categoryView_;
  /// The day the week, month or year is around; nothing for today.
  std::optional<DateInput::Day> anchor_;
};

}  // namespace quillmont
