// HistoryModel: the history as a table model, one row per booking or work
// entry, newest first: when, what (the booking's category, or work), the
// note, the amount (signed for bookings, the time worked for work) and the
// balance after each booking. Texts are made when a view asks for
// them, so a history of years costs one vector of plain rows.
#pragma once

#include <optional>
#include <vector>

#include <QAbstractTableModel>

#include "app/history/History.h"
#include "app/text/Display.h"

namespace quillmont {

class HistoryModel final : public QAbstractTableModel {
  Q_OBJECT

 public:
  enum Column { when, what, note, amount, balanceAfter };
  static constexpr int columns = 5;
  /// The record's identifier, for Qt::UserRole.
  static constexpr int identifierRole = Qt::UserRole;

  explicit HistoryModel(QObject* parent = nullptr);

  /// Replaces every row; `calendar` places the instants.
  void setRows(std::vector<History::Row> rows, const Calendar& calendar);
  void clear();
  const std::vector<History::Row>& rows() const { return rows_; }

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  QString text(const History::Row& row, int column) const;

  std::vector<History::Row> rows_;
  std::optional<Display> display_;
};

}  // namespace quillmont
