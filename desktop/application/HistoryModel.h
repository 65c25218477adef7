// HistoryModel: the history as a table model, one row per booking or work
// entry, newest first: when, what (the booking's category, or work), the
// note, the amount (signed for bookings, the time worked for work) and the
// balance after each booking. Texts are made when a view asks for
// them, so a history of years costs one vector of plain rows. A filter (a
// span of instants, bookings or work only) keeps the positions of the rows
// it lets through; the rows themselves stay where they are.
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

  /// Which rows show: those dated in [from, to) (an open end when absent)
  /// and of the kinds wanted.
  struct Filter {
    enum class Kinds { all, bookings, work };
    std::optional<Date> from;
    std::optional<Date> to;
    Kinds kinds = Kinds::all;
  };

  explicit HistoryModel(QObject* parent = nullptr);

  /// Replaces every row; `calendar` places the instants.
  void setRows(std::vector<History::Row> rows, const Calendar& calendar);
  void clear();
  /// Every row, filtered or not.
  const std::vector<History::Row>& rows() const { return rows_; }
  void setFilter(const Filter& filter);
  const Filter& filter() const { return filter_; }
  /// The row shown at a position of the model.
  const History::Row& row(int position) const { return rows_[shown_[static_cast<std::size_t>(position)]]; }

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  QString text(const History::Row& row, int column) const;

  void select();

  std::vector<History::Row> rows_;
  Filter filter_;
  /// The positions in rows_ of the rows the filter lets through.
  std::vector<std::size_t> shown_;
  std::optional<Display> display_;
};

}  // namespace quillmont
