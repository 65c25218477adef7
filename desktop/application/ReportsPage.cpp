#include "desktop/application/ReportsPage.h"

#include <algorithm>
#include <exception>

#include <QComboBox>
#include <QDateEdit>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMenu>
#include <QStandardItemModel>
#include <QTableView>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

#include "app/Refusal.h"
#include "app/files/FileTransfer.h"
#include "app/reports/Reports.h"
#include "app/session/StoreSession.h"
#include "app/text/Display.h"
#include "desktop/application/DayChart.h"
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

QToolButton* toolButton(const QString& text, const QString& name, QWidget* parent) {
  auto* button = new QToolButton(parent);
  button->setText(text);
  button->setAccessibleName(name);
  button->setToolTip(name);
  button->setAutoRaise(true);
  return button;
}

DateInput::Day dayOf(const QDate& date) { return {date.year(), date.month(), date.day()}; }
QDate dateOf(const DateInput::Day& day) { return QDate(day.year, day.month, day.day); }

}  // namespace

ReportsPage::ReportsPage(QWidget* parent)
    : Page(parent),
      period_(new QComboBox(this)),
      previous_(toolButton(QString::fromUtf8("\u2039"), "Previous period", this)),
      next_(toolButton(QString::fromUtf8("\u203a"), "Next period", this)),
      today_(toolButton("Today", "Period around today", this)),
      from_(new QDateEdit(this)),
      to_(new QDateEdit(this)),
      toLabel_(new QLabel("to", this)),
      export_(new QToolButton(this)),
      exportMessage_(new QLabel(this)),
      title_(new QLabel(this)),
      empty_(new QLabel(this)),
      chart_(new DayChart(this)),
      days_(new DayTableModel(this)),
      dayView_(new QTableView(this)),
      categoriesTitle_(new QLabel("Bookings by category", this)),
      categories_(new QStandardItemModel(0, 3, this)),
      categoryView_(new QTableView(this)) {
  period_->addItems({"Week", "Month", "Year", "Range of days"});
  period_->setCurrentIndex(Period::month);
  period_->setAccessibleName("Period");
  auto* periodLabel = new QLabel("&Period", this);
  periodLabel->setBuddy(period_);
  previous_->setShortcut(QKeySequence(Qt::ALT | Qt::Key_Left));
  next_->setShortcut(QKeySequence(Qt::ALT | Qt::Key_Right));
  today_->setShortcut(QKeySequence(Qt::ALT | Qt::Key_Home));
  for (QDateEdit* edit : {from_, to_}) {
    edit->setCalendarPopup(true);
    edit->setDisplayFormat("yyyy-MM-dd");
    edit->setDate(QDate::currentDate());
  }
  from_->setAccessibleName("First day");
  to_->setAccessibleName("Last day");

  export_->setText("Export CSV\u2026");
  export_->setAccessibleName("Export CSV");
  export_->setPopupMode(QToolButton::InstantPopup);
  auto* exports = new QMenu(export_);
  exports->addAction("Days (worked, adjustments, planned, difference)\u2026", this,
                     [this] { chooseExport(Document::days); });
  exports->addAction("Ledger (added, removed, net change)\u2026", this, [this] { chooseExport(Document::ledger); });
  export_->setMenu(exports);
  // The style draws the menu's arrow in the button's corner: leave it room
  // beside the text instead of over the ellipsis.
  export_->setMinimumWidth(export_->sizeHint().width() + export_->style()->pixelMetric(QStyle::PM_MenuButtonIndicator));
  exportMessage_->setAccessibleName("Export");
  exportMessage_->setWordWrap(true);
  exportMessage_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  exportMessage_->hide();

  QFont bold = title_->font();
  bold.setBold(true);
  bold.setPointSizeF(bold.pointSizeF() * 1.15);
  title_->setFont(bold);
  title_->setAccessibleName("Report");
  // A long range may wrap rather than widen the window.
  title_->setWordWrap(true);
  categoriesTitle_->setFont(bold);

  auto* top = new QHBoxLayout;
  top->addWidget(title_, 1);
  top->addWidget(periodLabel);
  top->addWidget(period_);
  top->addWidget(previous_);
  top->addWidget(today_);
  top->addWidget(next_);
  top->addWidget(from_);
  top->addWidget(toLabel_);
  top->addWidget(to_);
  top->addSpacing(8);
  top->addWidget(export_);

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
  layout->addWidget(exportMessage_);
  layout->addWidget(chart_, 2);
  layout->addWidget(dayView_, 3);
  layout->addWidget(empty_, 3);
  layout->addWidget(categoriesTitle_);
  layout->addWidget(categoryView_, 1);
  connect(period_, &QComboBox::currentIndexChanged, this, [this] { periodChosen(); });
  connect(previous_, &QToolButton::clicked, this, [this] { step(-1); });
  connect(next_, &QToolButton::clicked, this, [this] { step(1); });
  connect(today_, &QToolButton::clicked, this, [this] { showToday(); });
  connect(from_, &QDateEdit::dateChanged, this, [this] {
    if (period_->currentIndex() == Period::range) refresh();
  });
  connect(to_, &QDateEdit::dateChanged, this, [this] {
    if (period_->currentIndex() == Period::range) refresh();
  });
  periodChosen();
}

void ReportsPage::periodChosen() {
  const bool ranged = period_->currentIndex() == Period::range;
  from_->setVisible(ranged);
  toLabel_->setVisible(ranged);
  to_->setVisible(ranged);
  refresh();
}

void ReportsPage::showRange(const QDate& from, const QDate& to) {
  const QSignalBlocker blockPeriod(period_);
  const QSignalBlocker blockFrom(from_);
  const QSignalBlocker blockTo(to_);
  from_->setDate(std::min(from, to));
  to_->setDate(std::max(from, to));
  period_->setCurrentIndex(Period::range);
  periodChosen();
}

void ReportsPage::step(int direction) {
  if (period_->currentIndex() == Period::range) {
    const qint64 length = from_->date().daysTo(to_->date()) + 1;
    showRange(from_->date().addDays(direction * length), to_->date().addDays(direction * length));
    return;
  }
  QDate around = anchor_ ? dateOf(*anchor_) : QDate::currentDate();
  switch (period_->currentIndex()) {
    case Period::week: around = around.addDays(7 * direction); break;
    case Period::month: around = around.addMonths(direction); break;
    default: around = around.addYears(direction); break;
  }
  anchor_ = dayOf(around);
  refresh();
}

void ReportsPage::showToday() {
  anchor_.reset();
  if (period_->currentIndex() == Period::range) {
    const qint64 length = from_->date().daysTo(to_->date());
    showRange(QDate::currentDate().addDays(-length), QDate::currentDate());
    return;
  }
  refresh();
}

DateInterval ReportsPage::interval(StoreSession& session) const {
  const Calendar& calendar = session.calendar();
  switch (period_->currentIndex()) {
    case Period::week: return Reports::periodAround(Reports::Span::week, anchor_.value_or(session.today()), calendar);
    case Period::year: return Reports::periodAround(Reports::Span::year, anchor_.value_or(session.today()), calendar);
    case Period::range:
      return DateInterval::between(DateInput::startOfDay(dayOf(from_->date()), calendar),
                                   DateInput::endOfDay(dayOf(to_->date()), calendar));
    default: return Reports::periodAround(Reports::Span::month, anchor_.value_or(session.today()), calendar);
  }
}

void ReportsPage::show(StoreSession& session) {
  const Calendar& calendar = session.calendar();
  Reports::Report report = Reports::make(session, interval(session));
  const Display display(calendar);
  static const char* names[] = {"Week ", "Month ", "Year ", "Days "};
  QString title = QString(names[std::clamp(period_->currentIndex(), 0, 3)]) +
                  QString::fromStdString(display.day(report.report.interval.start)) + " to " +
                  QString::fromStdString(display.day(report.lastDay));
  if (report.throughToday) title += ", through today";
  title_->setText(title);

  std::vector<DayChart::Bar> bars;
  bars.reserve(report.report.days.size());
  const DateInput::Day today = session.today();
  for (const DayBalance& day : report.report.days) {
    const DateInput::Day shown = DateInput::dayOf(day.date, calendar);
    bars.push_back({QString::number(shown.day), day.balanceSeconds() / 3600.0, shown == today});
  }
  chart_->setBars(std::move(bars), report.chartRange.lowerBound, report.chartRange.upperBound);

  categories_->removeRows(0, categories_->rowCount());
  for (const auto& total : Reports::categoryTotals(session, report.report)) {
    categories_->appendRow({item(total.title, Qt::AlignLeft), item(std::to_string(total.count), Qt::AlignRight),
                            item(Display::amount(total.seconds), Qt::AlignRight)});
  }
  const bool none = report.report.days.empty();
  days_->setReport(std::move(report), calendar);
  dayView_->setVisible(!none);
  chart_->setVisible(!none);
  empty_->setVisible(none);
  const bool anyCategory = categories_->rowCount() > 0;
  categoriesTitle_->setVisible(anyCategory);
  categoryView_->setVisible(anyCategory);
}

void ReportsPage::clear() {
  title_->clear();
  days_->clear();
  chart_->setBars({}, 0, 1);
  categories_->removeRows(0, categories_->rowCount());
  empty_->hide();
}

QString ReportsPage::title() const { return title_->text(); }

QString ReportsPage::exportTo(Document document, const QString& path) {
  QString problem;
  try {
    StoreSession session;
    const DateInterval shown = interval(session);
    const std::string text = document == Document::days ? Reports::daysCSV(session, shown)
                                                        : Reports::ledgerCSV(session, shown);
    FileTransfer::writeAtomically(path.toStdString(), text);
    exportMessage_->setText("Saved " + path + ".");
  } catch (const std::exception& error) {
    problem = QString::fromUtf8(error.what());
    exportMessage_->setText(problem);
  }
  exportMessage_->show();
  return problem;
}

QString ReportsPage::exportMessage() const { return exportMessage_->isHidden() ? QString() : exportMessage_->text(); }

void ReportsPage::chooseExport(Document document) {
  const QString suggested = document == Document::days ? "days.csv" : "ledger.csv";
  auto* dialog = new QFileDialog(this, document == Document::days ? "Export the days as CSV" : "Export the ledger as CSV",
                                 QString(), "CSV files (*.csv)");
  dialog->setAcceptMode(QFileDialog::AcceptSave);
  dialog->setDefaultSuffix("csv");
  dialog->selectFile(suggested);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  // Window-modal: the tray and the other windows stay usable meanwhile.
  dialog->setWindowModality(Qt::WindowModal);
  connect(dialog, &QFileDialog::fileSelected, this, [this, document](const QString& path) { exportTo(document, path); });
  dialog->open();
}

}  // namespace quillmont
