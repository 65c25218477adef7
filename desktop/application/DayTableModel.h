// DayTableModel: a report's days as a table model: the day (with its public
// holiday), worked, adjustments, planned and difference, and a last row of
// the sums.
#pragma once

#include <optional>

#include <QAbstractTableModel>

#include "app/reports/Reports.h"
#include "app/text/Display.h"

namespace quillmont {

class DayTableModel final : public QAbstractTableModel {
  Q_OBJECT

 public:
  enum Column { date, worked, adjustments, planned, difference };
  static constexpr int columns = 5;

  explicit DayTableModel(QObject* parent = nullptr);

  void setReport(Reports::Report report, const Calendar& calendar);
  void clear();

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  QString text(int row, int column) const;

  std::optional<Reports::Report> report_;
  std::optional<Display> display_;
};

}  // namespace quillmont
