// ReportsPage: the report of the current week or month (the person picks
// which): a day table with the sums, and the bookings' totals by category.
#pragma once

#include "desktop/application/Page.h"

class QComboBox;
class QLabel;
class QStandardItemModel;
class QTableView;

namespace quillmont {

class DayTableModel;

class ReportsPage final : public Page {
  Q_OBJECT

 public:
  explicit ReportsPage(QWidget* parent = nullptr);

  QComboBox& period() const { return *period_; }
  QString title() const;
  DayTableModel& days() const { return *days_; }
  QStandardItemModel& categories() const { return *categories_; }

 protected:
  void show(StoreSession& session) override;
  void clear() override;

 private:
  QComboBox* period_;
  QLabel* title_;
  QLabel* empty_;
  DayTableModel* days_;
  QTableView* dayView_;
  QLabel* categoriesTitle_;
  QStandardItemModel* categories_;
  QTableView* categoryView_;
};

}  // namespace quillmont
