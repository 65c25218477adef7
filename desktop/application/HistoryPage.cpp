#include "desktop/application/HistoryPage.h"

#include <exception>

#include <QAction>
#include <QComboBox>
#include <QDateEdit>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollBar>
#include <QTableView>
#include <QToolBar>
#include <QVBoxLayout>

#include "app/InvalidInput.h"
#include "app/Refusal.h"
#include "app/bookings/Bookings.h"
#include "app/history/History.h"
#include "app/housekeeping/Housekeeping.h"
#include "app/input/DateInput.h"
#include "app/session/StoreSession.h"
#include "app/text/Display.h"
#include "app/work/WorkEntries.h"
#include "desktop/application/BookingDialog.h"
#include "desktop/application/HistoryModel.h"
#include "desktop/application/WindowRemedies.h"
#include "desktop/application/WorkEntryDialog.h"

namespace quillmont {
namespace {

QString text(const std::string& value) { return QString::fromStdString(value); }

DateInput::Day dayOf(const QDate& date) { return {date.year(), date.month(), date.day()}; }

// "the booking of −0:45 (Appointment) on 2026-03-15 09:30"
QString described(const History::Row& row, const Display& display) {
  if (row.kind == History::Row::Kind::booking) {
    return "the booking of " + text(Display::amount(row.seconds)) + " (" + text(row.category) + ") on " +
           text(display.dateTime(row.date));
  }
  return "the work of " + text(display.span(row.date, row.endedAt)) + " (" + text(Display::duration(row.seconds)) + ")";
}

}  // namespace

HistoryPage::HistoryPage(QWidget* parent)
    : Page(parent),
      model_(new HistoryModel(this)),
      tools_(new QToolBar(this)),
      range_(new QComboBox(this)),
      kinds_(new QComboBox(this)),
      from_(new QDateEdit(this)),
      to_(new QDateEdit(this)),
      view_(new QTableView(this)),
      empty_(new QLabel(this)),
      message_(new QLabel(this)) {
  // The toolbar: what can be done to the selected record, and undo.
  tools_->setAccessibleName("Activity actions");
  tools_->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  edit_ = tools_->addAction(QIcon::fromTheme("document-edit"), "Edit…");
  edit_->setToolTip("Change the selected record (Enter)");
  delete_ = tools_->addAction(QIcon::fromTheme("edit-delete"), "Delete…");
  delete_->setToolTip("Delete the selected record (Delete)");
  delete_->setShortcut(QKeySequence::Delete);
  delete_->setShortcutContext(Qt::WidgetWithChildrenShortcut);
  undo_ = tools_->addAction(QIcon::fromTheme("edit-undo"), "Undo");
  undo_->setToolTip("Take back the last change (Ctrl+Z)");
  connect(edit_, &QAction::triggered, this, &HistoryPage::editSelected);
  connect(delete_, &QAction::triggered, this, &HistoryPage::deleteSelected);
  connect(undo_, &QAction::triggered, this, &HistoryPage::undo);
  // The shortcut works while the keyboard is in the list, not elsewhere.
  addAction(delete_);

  // The filter row.
  range_->addItems({"All time", "Today", "Last 7 days", "Last 30 days", "This year", "Between…"});
  range_->setAccessibleName("Range");
  kinds_->addItems({"Bookings and work", "Bookings", "Work"});
  kinds_->setAccessibleName("Kind");
  for (QDateEdit* edge : {from_, to_}) {
    edge->setCalendarPopup(true);
    edge->setDisplayFormat("yyyy-MM-dd");
    edge->setDate(QDate::currentDate());
    edge->setEnabled(false);
    connect(edge, &QDateEdit::dateChanged, this, &HistoryPage::applyFilter);
  }
  from_->setAccessibleName("From");
  to_->setAccessibleName("To");
  auto* showing = new QLabel("&Show", this);
  showing->setBuddy(range_);
  auto* dash = new QLabel(QString::fromUtf8("\u2013"), this);
  auto* filters = new QHBoxLayout;
  filters->addWidget(showing);
  filters->addWidget(range_);
  filters->addWidget(from_);
  filters->addWidget(dash);
  filters->addWidget(to_);
  filters->addSpacing(12);
  filters->addWidget(kinds_);
  filters->addStretch(1);
  filters->addWidget(tools_);
  connect(range_, &QComboBox::currentIndexChanged, this, [this](int index) {
    from_->setEnabled(index == Range::between);
    to_->setEnabled(index == Range::between);
    applyFilter();
  });
  connect(kinds_, &QComboBox::currentIndexChanged, this, &HistoryPage::applyFilter);

  view_->setModel(model_);
  view_->setAccessibleName("Activity");
  view_->setSelectionBehavior(QAbstractItemView::SelectRows);
  view_->setSelectionMode(QAbstractItemView::SingleSelection);
  view_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  view_->setAlternatingRowColors(true);
  view_->setShowGrid(false);
  view_->setWordWrap(false);
  view_->setTabKeyNavigation(false);
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
  connect(view_, &QTableView::activated, this, [this] { editSelected(); });
  connect(model_, &QAbstractItemModel::modelReset, this, &HistoryPage::updateActions);
  connect(view_->selectionModel(), &QItemSelectionModel::selectionChanged, this, &HistoryPage::updateActions);

  empty_->setAlignment(Qt::AlignCenter);
  empty_->setForegroundRole(QPalette::PlaceholderText);
  empty_->hide();
  message_->setWordWrap(true);
  message_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  message_->setAccessibleName("Message");
  message_->hide();

  pageLayout()->addLayout(filters);
  pageLayout()->addWidget(message_);
  pageLayout()->addWidget(view_, 1);
  pageLayout()->addWidget(empty_, 1);
  updateActions();
}

void HistoryPage::show(StoreSession& session) {
  // Reading again (the store changed) keeps the selected record and the place in the list.
  const QModelIndex current = view_->selectionModel()->currentIndex();
  const QVariant selected = current.isValid() ? current.data(HistoryModel::identifierRole) : QVariant();
  const int place = view_->verticalScrollBar()->value();
  calendar_.emplace(session.calendar());
  model_->setRows(History::read(session), session.calendar());
  applyFilter();
  if (selected.isValid()) {
    for (int position = 0; position < model_->rowCount(); ++position) {
      if (model_->index(position, 0).data(HistoryModel::identifierRole) == selected) {
        view_->selectRow(position);
        break;
      }
    }
  }
  view_->verticalScrollBar()->setValue(place);
}

void HistoryPage::clear() {
  model_->clear();
  empty_->hide();
}

void HistoryPage::applyFilter() {
  if (!calendar_) calendar_.emplace(Calendar::autoupdatingCurrent());
  const Calendar& calendar = *calendar_;
  const DateInput::Day thisDay = DateInput::dayOf(Date::now(), calendar);
  HistoryModel::Filter filter;
  const auto since = [&](const DateInput::Day& first) {
    filter.from = DateInput::startOfDay(first, calendar);
    filter.to = DateInput::endOfDay(thisDay, calendar);
  };
  switch (range_->currentIndex()) {
    case Range::today: since(thisDay); break;
    case Range::lastSevenDays: since(thisDay.adding(-6)); break;
    case Range::lastThirtyDays: since(thisDay.adding(-29)); break;
    case Range::thisYear:
      filter.from = DateInput::startOfDay({thisDay.year, 1, 1}, calendar);
      filter.to = DateInput::endOfDay({thisDay.year, 12, 31}, calendar);
      break;
    case Range::between:
      filter.from = DateInput::startOfDay(dayOf(from_->date()), calendar);
      filter.to = DateInput::endOfDay(dayOf(to_->date()), calendar);
      break;
    default: break;
  }
  filter.kinds = static_cast<HistoryModel::Filter::Kinds>(std::max(0, kinds_->currentIndex()));
  model_->setFilter(filter);
  const bool nothingAtAll = model_->rows().empty();
  const bool none = model_->rowCount() == 0;
  empty_->setText(nothingAtAll ? "Nothing booked and no work recorded yet." : "Nothing in this range.");
  view_->setVisible(!none);
  empty_->setVisible(none);
}

void HistoryPage::updateActions() {
  const QModelIndex current = view_->selectionModel()->currentIndex();
  const bool any = current.isValid() && view_->selectionModel()->isSelected(current);
  edit_->setEnabled(any);
  delete_->setEnabled(any);
}

QString HistoryPage::message() const { return message_->text(); }

void HistoryPage::say(const QString& text) {
  message_->setText(text);
  message_->setVisible(!text.isEmpty());
}

void HistoryPage::focusFilter() { range_->setFocus(Qt::ShortcutFocusReason); }

void HistoryPage::change(const std::function<QString(StoreSession&)>& action) {
  QString outcome;
  try {
    StoreSession session;
    outcome = action(session);
  } catch (const InvalidInput& invalid) {
    outcome = WindowRemedies::message(invalid);
  } catch (const Refusal& refusal) {
    outcome = WindowRemedies::message(refusal);
  } catch (const std::exception& error) {
    outcome = "The time bank could not be changed: " + QString::fromUtf8(error.what());
  }
  refresh();
  say(outcome);
}

void HistoryPage::undo() {
  change([](StoreSession& session) {
    const UndoJournal::Action undone = Housekeeping::undo(session);
    return QString::fromUtf8("Took back \u201c") + text(undone.name) + QString::fromUtf8("\u201d.");
  });
}

template <class Dialog>
void HistoryPage::openEditor(Dialog* dialog, Dialog*& open, const QString& done) {
  open = dialog;
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  connect(dialog, &QDialog::accepted, this, [this, done] {
    refresh();
    say(done);
  });
  connect(dialog, &QObject::destroyed, this, [&open] { open = nullptr; });
  // Window-modal: the tray and the widget keep working while it is open.
  dialog->open();
}

void HistoryPage::editSelected() {
  const QModelIndex current = view_->selectionModel()->currentIndex();
  if (!current.isValid() || editDialog_ != nullptr || bookingDialog_ != nullptr || !calendar_) return;
  const History::Row& row = model_->row(current.row());
  if (row.kind == History::Row::Kind::work) {
    openEditor(new WorkEntryDialog(row, *calendar_, this), editDialog_, "The work entry was changed.");
    return;
  }
  try {
    StoreSession session;  // the categories on offer now
    openEditor(new BookingDialog(row, session, this), bookingDialog_, "The booking was changed.");
  } catch (const std::exception& error) {
    say("The booking cannot be changed now: " + QString::fromUtf8(error.what()));
  }
}

void HistoryPage::deleteSelected() {
  const QModelIndex current = view_->selectionModel()->currentIndex();
  if (!current.isValid() || question_ != nullptr || !calendar_) return;
  const History::Row row = model_->row(current.row());
  const Display display(*calendar_);
  question_ = new QMessageBox(QMessageBox::Question, "Delete",
                              "Delete " + described(row, display) + "?", QMessageBox::NoButton, this);
  question_->setInformativeText("Undo brings it back.");
  QPushButton* yes = question_->addButton("Delete", QMessageBox::DestructiveRole);
  question_->addButton(QMessageBox::Cancel);
  question_->setDefaultButton(QMessageBox::Cancel);
  question_->setAttribute(Qt::WA_DeleteOnClose);
  connect(question_, &QObject::destroyed, this, [this] { question_ = nullptr; });
  connect(question_, &QMessageBox::buttonClicked, this, [this, yes, row](QAbstractButton* clicked) {
    if (clicked != yes) return;
    const std::string identifier = row.id.uuidString();
    change([&](StoreSession& session) {
      if (row.kind == History::Row::Kind::booking) {
        Bookings::remove(session, identifier);
        return QString("The booking was deleted.");
      }
      WorkEntries::remove(session, identifier);
      return QString("The work entry was deleted.");
    });
  });
  question_->open();
}

}  // namespace quillmont
