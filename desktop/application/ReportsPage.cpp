#include "desktop/application/ReportsPage.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QStandardItemModel>
#include <QTableView>
#include <QVBoxLayout>

#include "app/reports/Reports.h"
#include "app/session/StoreSession.h"
#include "app/text/Display.h"
#include "desktop/application/DayTableModel.h"

namespace quillmont {
namespace {

void setUpTable(QTableView* view, const QString& name) {
  view->setAccessibleName(name);
  view->setEditTriggers(QAbstractItemView::NoEditTriggers);
  view->setSelectionBehavior(QAbstractItemView::SelectRows);
  view->setAlternatingRowColors(true);
  view->setShowGrid(false);
  view->setWordWrap(false);
  view->verticalHeader()->hide();
  view->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  view->verticalHeader()->setDefaultSectionSize(view->fontMetrics().height() + 8);
  // The first column takes what the figures leave; they keep their width.
  view->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
  view->horizontalHeader()->setMinimumSectionSize(view->fontMetrics().horizontalAdvance(QString::fromUtf8("\u221200:00")) + 24);
  view->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
}

QStandardItem* item(const std::string& text, Qt::Alignment alignment) {
  auto* made = new QStandardItem(QString::fromStdString(text));
  made->setTextAlignment(alignment | Qt::AlignVCenter);
  return made;
}

}  // namespace

ReportsPage::ReportsPage(QWidget* parent)
    : Page(parent),
      period_(new QComboBox(this)),
      title_(new QLabel(this)),
      empty_(new QLabel(this)),
      days_(new DayTableModel(this)),
      dayView_(new QTableView(this)),
      categoriesTitle_(new QLabel("Bookings by category", this)),
      categories_(new QStandardItemModel(0, 3, this)),
      categoryView_(new QTableView(this)) {
  period_->addItem("This week");
  period_->addItem("This month");
  period_->setCurrentIndex(1);
  period_->setAccessibleName("Period");
  auto* periodLabel = new QLabel("&Period", this);
  periodLabel->setBuddy(period_);

  QFont bold = title_->font();
  bold.setBold(true);
  bold.setPointSizeF(bold.pointSizeF() * 1.15);
  title_->setFont(bold);
  title_->setAccessibleName("Report");
  categoriesTitle_->setFont(bold);

  auto* top = new QHBoxLayout;
  top->addWidget(title_, 1);
  top->addWidget(periodLabel);
  top->addWidget(period_);

  dayView_->setModel(days_);
  setUpTable(dayView_, "Days");
  categories_->setHorizontalHeaderLabels({"Category", "Bookings", "Total"});
  categories_->horizontalHeaderItem(0)->setTextAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  categories_->horizontalHeaderItem(1)->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
  categories_->horizontalHeaderItem(2)->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
  categoryView_->setModel(categories_);
  setUpTable(categoryView_, "Bookings by category");

  empty_->setWordWrap(true);
  empty_->setAlignment(Qt::AlignCenter);
  empty_->setForegroundRole(QPalette::PlaceholderText);
  empty_->setText("No days to report: the period lies before the calculation start or in the future.");
  empty_->hide();

  QVBoxLayout* layout = pageLayout();
  layout->addLayout(top);
  layout->addWidget(dayView_, 3);
  layout->addWidget(empty_, 3);
  layout->addWidget(categoriesTitle_);
  layout->addWidget(categoryView_, 1);
  connect(period_, &QComboBox::currentIndexChanged, this, [this] { refresh(); });
}

void ReportsPage::show(StoreSession& session) {
  const Calendar& calendar = session.calendar();
  const bool week = period_->currentIndex() == 0;
  const auto span = week ? Reports::Span::week : Reports::Span::month;
  Reports::Report report = Reports::make(session, Reports::periodAround(span, session.today(), calendar));
  const Display display(calendar);
  QString title = QString(week ? "Week " : "Month ") + QString::fromStdString(display.day(report.report.interval.start)) +
                  " to " + QString::fromStdString(display.day(report.lastDay));
  if (report.throughToday) title += ", through today";
  title_->setText(title);

  categories_->removeRows(0, categories_->rowCount());
  for (const auto& total : Reports::categoryTotals(session, report.report)) {
    categories_->appendRow({item(total.title, Qt::AlignLeft), item(std::to_string(total.count), Qt::AlignRight),
                            item(Display::amount(total.seconds), Qt::AlignRight)});
  }
  const bool none = report.report.days.empty();
  days_->setReport(std::move(report), calendar);
  dayView_->setVisible(!none);
  empty_->setVisible(none);
  const bool anyCategory = categories_->rowCount() > 0;
  categoriesTitle_->setVisible(anyCategory);
  categoryView_->setVisible(anyCategory);
}

void ReportsPage::clear() {
  title_->clear();
  days_->clear();
  categories_->removeRows(0, categories_->rowCount());
  empty_->hide();
}

QString ReportsPage::title() const { return title_->text(); }

}  // namespace quillmont
