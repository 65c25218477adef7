#include "desktop/application/HistoryPage.h"

#include <QHeaderView>
#include <QLabel>
#include <QTableView>
#include <QVBoxLayout>

#include "app/history/History.h"
#include "app/session/StoreSession.h"
#include "desktop/application/HistoryModel.h"

namespace quillmont {

HistoryPage::HistoryPage(QWidget* parent)
    : Page(parent), model_(new HistoryModel(this)), view_(new QTableView(this)), empty_(new QLabel(this)) {
  view_->setModel(model_);
  view_->setAccessibleName("History");
  view_->setSelectionBehavior(QAbstractItemView::SelectRows);
  view_->setSelectionMode(QAbstractItemView::SingleSelection);
  view_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  view_->setAlternatingRowColors(true);
  view_->setShowGrid(false);
  view_->setWordWrap(false);
  view_->verticalHeader()->hide();
  // Rows of one height need no measuring, whatever their number.
  view_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  view_->verticalHeader()->setDefaultSectionSize(view_->fontMetrics().height() + 8);
  QHeaderView* header = view_->horizontalHeader();
  header->setSectionResizeMode(QHeaderView::Interactive);
  // The note takes the room the figures leave; they stay at the right edge.
  header->setSectionResizeMode(HistoryModel::note, QHeaderView::Stretch);
  const int digit = view_->fontMetrics().horizontalAdvance('0');
  view_->setColumnWidth(HistoryModel::when, digit * 30);
  view_->setColumnWidth(HistoryModel::what, digit * 22);
  view_->setColumnWidth(HistoryModel::amount, digit * 10);
  view_->setColumnWidth(HistoryModel::balanceAfter, digit * 13);

  empty_->setText("Nothing booked and no work recorded yet.");
  empty_->setAlignment(Qt::AlignCenter);
  empty_->setForegroundRole(QPalette::PlaceholderText);
  empty_->hide();
  pageLayout()->addWidget(view_, 1);
  pageLayout()->addWidget(empty_, 1);
}

void HistoryPage::show(StoreSession& session) {
  model_->setRows(History::read(session), session.calendar());
  const bool none = model_->rowCount() == 0;
  view_->setVisible(!none);
  empty_->setVisible(none);
}

void HistoryPage::clear() {
  model_->clear();
  empty_->hide();
}

}  // namespace quillmont
