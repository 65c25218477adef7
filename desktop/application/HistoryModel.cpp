#include "desktop/application/HistoryModel.h"

#include <QFont>

namespace quillmont {

HistoryModel::HistoryModel(QObject* parent) : QAbstractTableModel(parent) {}

void HistoryModel::setRows(std::vector<History::Row> rows, const Calendar& calendar) {
  beginResetModel();
  rows_ = std::move(rows);
  display_.emplace(calendar);
  select();
  endResetModel();
}

void HistoryModel::clear() {
  beginResetModel();
  rows_.clear();
  shown_.clear();
  endResetModel();
}

void HistoryModel::setFilter(const Filter& filter) {
  beginResetModel();
  filter_ = filter;
  select();
  endResetModel();
}

void HistoryModel::select() {
  using Kinds = Filter::Kinds;
  shown_.clear();
  shown_.reserve(rows_.size());
  for (std::size_t position = 0; position < rows_.size(); ++position) {
    const History::Row& row = rows_[position];
    const bool booking = row.kind == History::Row::Kind::booking;
    if ((filter_.kinds == Kinds::bookings && !booking) || (filter_.kinds == Kinds::work && booking)) continue;
    if (filter_.from && row.date < *filter_.from) continue;
    if (filter_.to && !(row.date < *filter_.to)) continue;
    shown_.push_back(position);
  }
}

int HistoryModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(shown_.size());
}

int HistoryModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : columns; }

QString HistoryModel::text(const History::Row& row, int column) const {
  const bool booking = row.kind == History::Row::Kind::booking;
  switch (column) {
    case Column::when:
      return QString::fromStdString(booking ? display_->dateTime(row.date) : display_->span(row.date, row.endedAt));
    case Column::what:
      if (booking) return QString::fromStdString(row.category);
      if (row.breakMinutes > 0) {
        return "Work, break " + QString::fromStdString(Display::duration(static_cast<double>(row.breakMinutes) * 60.0));
      }
      return "Work";
    case Column::amount:
      return QString::fromStdString(booking ? Display::amount(row.seconds) : Display::duration(row.seconds));
    case Column::balanceAfter:
      return row.balanceAfterSeconds ? QString::fromStdString(Display::amount(*row.balanceAfterSeconds)) : QString();
    case Column::note:
      return QString::fromStdString(row.note);
    default:
      return {};
  }
}

QVariant HistoryModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= static_cast<int>(shown_.size()) || !display_) return {};
  const History::Row& row = this->row(index.row());
  switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
      return text(row, index.column());
    case Qt::ToolTipRole:
      return index.column() == Column::note && !row.note.empty() ? QVariant(QString::fromStdString(row.note)) : QVariant();
    case Qt::TextAlignmentRole:
      if (index.column() == Column::amount || index.column() == Column::balanceAfter) {
        return QVariant::fromValue(Qt::AlignRight | Qt::AlignVCenter);
      }
      return QVariant::fromValue(Qt::AlignLeft | Qt::AlignVCenter);
    case Qt::FontRole:
      if (row.kind == History::Row::Kind::work && !row.endedAt) {
        QFont running;
        running.setItalic(true);
        return running;
      }
      return {};
    case identifierRole:
      return QString::fromStdString(row.id.uuidString());
    default:
      return {};
  }
}

QVariant HistoryModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal) return QAbstractTableModel::headerData(section, orientation, role);
  if (role == Qt::TextAlignmentRole) {
    const bool number = section == Column::amount || section == Column::balanceAfter;
    return QVariant::fromValue((number ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
  }
  if (role != Qt::DisplayRole) return {};
  switch (section) {
    case Column::when: return "When";
    case Column::what: return "What";
    case Column::amount: return "Amount";
    case Column::balanceAfter: return "Balance after";
    case Column::note: return "Note";
    default: return {};
  }
}

}  // namespace quillmont
