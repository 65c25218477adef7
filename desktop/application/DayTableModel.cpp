#include "desktop/application/DayTableModel.h"

#include <QFont>

namespace quillmont {

DayTableModel::DayTableModel(QObject* parent) : QAbstractTableModel(parent) {}

void DayTableModel::setReport(Reports::Report report, const Calendar& calendar) {
  beginResetModel();
  report_ = std::move(report);
  display_.emplace(calendar);
  endResetModel();
}

void DayTableModel::clear() {
  beginResetModel();
  report_.reset();
  endResetModel();
}

int DayTableModel::rowCount(const QModelIndex& parent) const {
  if (parent.isValid() || !report_ || report_->report.days.empty()) return 0;
  return static_cast<int>(report_->report.days.size()) + 1;  // and the sums
}

int DayTableModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : columns; }

QString DayTableModel::text(int row, int column) const {
  const TimeBankReport& report = report_->report;
  const auto text = [](const std::string& value) { return QString::fromStdString(value); };
  if (row == static_cast<int>(report.days.size())) {
    switch (column) {
      case Column::date: return "Total";
      case Column::worked: return text(Display::duration(report.workedSeconds()));
      case Column::adjustments: return text(Display::amount(report.adjustmentSeconds()));
      case Column::planned: return text(Display::duration(report.expectedSeconds()));
      case Column::difference: return text(Display::amount(report.balanceSeconds()));
      default: return {};
    }
  }
  const DayBalance& day = report.days[static_cast<std::size_t>(row)];
  switch (column) {
    case Column::date: {
      QString name = text(display_->weekday(day.date) + " " + display_->day(day.date));
      if (const auto holiday = report_->holidayOn(day.date)) name += "  " + text(*holiday);
      return name;
    }
    case Column::worked: return text(Display::duration(day.workedSeconds));
    case Column::adjustments: return text(Display::amount(day.adjustmentSeconds));
    case Column::planned: return text(Display::duration(day.expectedSeconds));
    case Column::difference: return text(Display::amount(day.balanceSeconds()));
    default: return {};
  }
}

QVariant DayTableModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= rowCount()) return {};
  switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
      return text(index.row(), index.column());
    case Qt::TextAlignmentRole:
      return QVariant::fromValue(index.column() == Column::date ? Qt::AlignLeft | Qt::AlignVCenter
                                                               : Qt::AlignRight | Qt::AlignVCenter);
    case Qt::FontRole:
      if (index.row() == rowCount() - 1) {
        QFont total;
        total.setBold(true);
        return total;
      }
      return {};
    default:
      return {};
  }
}

QVariant DayTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal) return QAbstractTableModel::headerData(section, orientation, role);
  if (role == Qt::TextAlignmentRole) {
    return QVariant::fromValue(section == Column::date ? Qt::AlignLeft | Qt::AlignVCenter : Qt::AlignRight | Qt::AlignVCenter);
  }
  if (role != Qt::DisplayRole) return {};
  switch (section) {
    case Column::date: return "Day";
    case Column::worked: return "Worked";
    case Column::adjustments: return "Adjustments";
    case Column::planned: return "Planned";
    case Column::difference: return "Difference";
    default: return {};
  }
}

}  // namespace quillmont
