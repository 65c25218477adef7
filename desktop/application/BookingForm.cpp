#include "desktop/application/BookingForm.h"

#include <QComboBox>
#include <QDateEdit>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "app/bookings/Bookings.h"
#include "app/input/TypedValue.h"
#include "app/session/StoreSession.h"
#include "app/settings/OfferedKinds.h"
#include "app/settings/OwnCategories.h"
#include "app/text/Display.h"
#include "core/ledger/AdjustmentCategoryOption.h"
#include "core/ledger/AdjustmentKindConfiguration.h"

namespace quillmont {
namespace {

QString text(std::string_view value) { return QString::fromUtf8(value.data(), static_cast<qsizetype>(value.size())); }

QString sideOf(AdjustmentCategoryBehavior behavior) {
  switch (behavior) {
    case AdjustmentCategoryBehavior::credit: return "adds time";
    case AdjustmentCategoryBehavior::debit: return "takes time";
    default: return "adds or takes time";
  }
}

bool configurable(BalanceAdjustmentKind kind) {
  for (const BalanceAdjustmentKind each : AdjustmentKindConfiguration::configurableKinds) {
    if (each == kind) return true;
  }
  return false;
}

}  // namespace

BookingForm::BookingForm(QWidget* parent)
    : QWidget(parent),
      amount_(new QLineEdit(this)),
      category_(new QComboBox(this)),
      note_(new QLineEdit(this)),
      day_(new QDateEdit(this)),
      book_(new QPushButton("&Book", this)) {
  BookingForm::prepareFields(*amount_, *category_, *note_, *day_);
  day_->setDate(QDate::currentDate());
  book_->setAccessibleName("Book");
  book_->setDefault(true);
  connect(book_, &QPushButton::clicked, this, &BookingForm::book);
  for (QLineEdit* edit : {amount_, note_}) connect(edit, &QLineEdit::returnPressed, this, &BookingForm::book);

  // Two columns of labelled fields, each with its problem line under it.
  auto* grid = new QGridLayout(this);
  grid->setContentsMargins(0, 0, 0, 0);
  const auto place = [&](int row, int column, const QString& label, QWidget* field, const std::string& name) {
    auto* caption = new QLabel(label, this);
    caption->setBuddy(field);
    // Level with the field, whether or not a problem line shows under it.
    caption->setMinimumHeight(field->sizeHint().height());
    caption->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    grid->addWidget(caption, row, column * 2, Qt::AlignTop);
    grid->addWidget(problems_.withLine(field, name, this), row, column * 2 + 1);
  };
  place(0, 0, "&Amount", amount_, "amount");
  place(0, 1, "&Category", category_, "category");
  place(1, 0, "N&ote", note_, "note");
  place(1, 1, "&Day", day_, "day");
  grid->setColumnStretch(1, 1);
  grid->setColumnStretch(3, 1);
  auto* last = new QHBoxLayout;
  // The refusal takes the room left of the button; the button keeps its size.
  last->addWidget(problems_.lineFor("", this), 10);
  last->addStretch(1);
  last->addWidget(book_, 0, Qt::AlignTop);
  grid->addLayout(last, 2, 0, 1, 4);
}

void BookingForm::prepareFields(QLineEdit& amount, QComboBox& category, QLineEdit& note, QDateEdit& day) {
  amount.setAccessibleName("Amount");
  amount.setPlaceholderText("+1:30, -45m or 90");
  amount.setClearButtonEnabled(true);
  category.setAccessibleName("Category");
  note.setAccessibleName("Note");
  note.setPlaceholderText("Optional");
  note.setClearButtonEnabled(true);
  day.setAccessibleName("Day");
  day.setCalendarPopup(true);
  day.setDisplayFormat("yyyy-MM-dd");
}

void BookingForm::offerCategories(QComboBox& categories, StoreSession& session) {
  categories.clear();
  const auto offered = OfferedKinds::offered(session);
  for (const BalanceAdjustmentKind kind : BalanceAdjustmentKind::allCases()) {
    if (configurable(kind) && !offered.contains(kind)) continue;
    const AdjustmentCategoryOption option = AdjustmentCategoryOption::builtIn(kind);
    categories.addItem(text(option.title) + " (" + sideOf(option.behavior) + ")", text(kind.rawValue()));
  }
  for (const CustomAdjustmentCategory& own : OwnCategories::list(session.settings())) {
    categories.addItem(text(own.title()) + " (" + sideOf(AdjustmentCategoryBehavior::debit) + ")",
                       text(own.title()));
  }
}

void BookingForm::load(StoreSession& session) {
  const QString chosen = category_->currentData().toString();
  offerCategories(*category_, session);
  const int again = category_->findData(chosen);
  category_->setCurrentIndex(again >= 0 ? again : 0);
}

void BookingForm::book() {
  const QString typed = amount_->text().trimmed();
  QString summary;
  const bool saved = problems_.attempt([&] {
    Bookings::Request request;
    request.minutes = TypedValue::minutes(typed.toStdString(), "amount");
    request.amountText = typed.toStdString();
    request.category = category_->currentData().toString().toStdString();
    request.note = note_->text().toStdString();
    // Today is booked at the present instant, another day at its noon.
    if (day_->date() != QDate::currentDate()) request.day = day_->date().toString("yyyy-MM-dd").toStdString();
    StoreSession session;
    const Bookings::Booked booked = Bookings::add(session, request);
    summary = "Booked " + text(Display::amountOfMinutes(booked.booking->minutes())) + " (" +
              text(booked.categoryTitle) + "); the balance is now " + text(Display::amount(booked.balanceSeconds)) + ".";
  });
  if (!saved) return;
  amount_->clear();
  note_->clear();
  emit booked(summary);
}

void BookingForm::focusAmount() {
  amount_->setFocus(Qt::ShortcutFocusReason);
  amount_->selectAll();
}

}  // namespace quillmont
