#include "desktop/application/BookingDialog.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>

#include <QComboBox>
#include <QDateEdit>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/bookings/Bookings.h"
#include "app/input/DateInput.h"
#include "app/session/StoreSession.h"
#include "core/ledger/AdjustmentCategoryOption.h"
#include "desktop/application/BookingForm.h"

namespace quillmont {
namespace {

/// The amount as a person would type it again: "-1:30", "+0:45".
QString typedAmount(double seconds) {
  const auto minutes = static_cast<std::int64_t>(std::llround(seconds / 60.0));
  const std::int64_t size = std::abs(minutes);
  return QString("%1%2:%3").arg(minutes < 0 ? "-" : "+").arg(size / 60).arg(size % 60, 2, 10, QChar('0'));
}

/// The title of the category an offered item books as.
std::string titleOf(const QString& data, StoreSession& session) {
  try {
    const auto option = AdjustmentCategoryOption::resolve(Bookings::category(data.toStdString(), session.settings()));
    return option ? option->title : data.toStdString();
  } catch (const std::exception&) {
    return data.toStdString();
  }
}

}  // namespace

BookingDialog::BookingDialog(const History::Row& booking, StoreSession& session, QWidget* parent)
    : QDialog(parent),
      identifier_(booking.id.uuidString()),
      amountWas_(typedAmount(booking.seconds)),
      noteWas_(QString::fromStdString(booking.note)),
      amount_(new QLineEdit(amountWas_, this)),
      category_(new QComboBox(this)),
      note_(new QLineEdit(noteWas_, this)),
      day_(new QDateEdit(this)) {
  setWindowTitle("Edit Booking");
  setAccessibleName("Edit booking");
  BookingForm::prepareFields(*amount_, *category_, *note_, *day_);
  const DateInput::Day day = DateInput::dayOf(booking.date, session.calendar());
  dayWas_ = QDate(day.year, day.month, day.day);
  day_->setDate(dayWas_);

  // The booking's own category, even when it is no longer offered (a kind
  // since hidden): it stays as it is unless another is chosen.
  BookingForm::offerCategories(*category_, session);
  categoryWas_ = -1;
  for (int item = 0; item < category_->count() && categoryWas_ < 0; ++item) {
    if (titleOf(category_->itemData(item).toString(), session) == booking.category) categoryWas_ = item;
  }
  if (categoryWas_ < 0) {
    category_->addItem(QString::fromStdString(booking.category), QString::fromStdString(booking.category));
    categoryWas_ = category_->count() - 1;
  }
  category_->setCurrentIndex(categoryWas_);

  auto* form = new QFormLayout;
  form->addRow("&Amount", problems_.withLine(amount_, "amount", this));
  form->addRow("&Category", problems_.withLine(category_, "category", this));
  form->addRow("N&ote", problems_.withLine(note_, "note", this));
  form->addRow("&Day", problems_.withLine(day_, "day", this));
  auto* hint = new QLabel("A booking moved to today is dated now; to another day, at its noon.", this);
  hint->setForegroundRole(QPalette::PlaceholderText);
  hint->setWordWrap(true);

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel, this);
  connect(buttons, &QDialogButtonBox::accepted, this, &BookingDialog::save);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addWidget(hint);
  layout->addWidget(problems_.lineFor("", this));
  layout->addWidget(buttons);
  setMinimumWidth(fontMetrics().horizontalAdvance('0') * 60);
  amount_->setFocus();
  amount_->selectAll();
}

void BookingDialog::save() {
  // Only what the person changed goes to the rules, so a booking keeps what
  // it was not asked to change (the time of its day, a category no longer offered).
  Bookings::Change change;
  const QString amount = amount_->text().trimmed();
  if (amount != amountWas_) change.amount = amount.toStdString();
  if (category_->currentIndex() != categoryWas_) change.category = category_->currentData().toString().toStdString();
  if (note_->text() != noteWas_) change.note = note_->text().toStdString();
  if (day_->date() != dayWas_) {
    change.day = day_->date() == QDate::currentDate() ? std::string("today")
                                                      : day_->date().toString("yyyy-MM-dd").toStdString();
  }
  if (change.empty()) {
    accept();
    return;
  }
  const bool saved = problems_.attempt([&] {
    StoreSession session;
    Bookings::edit(session, identifier_, change);
  });
  if (saved) {
    accept();
    return;
  }
  // The refusal's lines need room: the dialog grows to hold them whole.
  layout()->activate();
  const int wanted = layout()->hasHeightForWidth() ? layout()->totalHeightForWidth(width()) : sizeHint().height();
  if (height() < wanted) resize(width(), wanted);
}

}  // namespace quillmont
