#include "desktop/application/SetupForm.h"

#include <exception>
#include <string>
#include <vector>

#include <QDateEdit>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/InvalidInput.h"
#include "app/Refusal.h"
#include "app/input/TypedValue.h"
#include "app/session/StoreSession.h"
#include "app/settings/Settings.h"
#include "core/ledger/DurationFormatting.h"
#include "desktop/application/WindowRemedies.h"

namespace quillmont {
namespace {

constexpr std::array<const char*, 7> weekdayNames{"Monday", "Tuesday", "Wednesday", "Thursday",
                                                   "Friday", "Saturday", "Sunday"};

QLabel* newRefusal(QWidget* parent, const QString& field) {
  auto* label = new QLabel(parent);
  label->setWordWrap(true);
  label->setAccessibleName("Refusal of " + field);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  label->hide();
  return label;
}

QString clock(std::int64_t minutes, bool signs) {
  return QString::fromStdString(DurationFormatting::clock(static_cast<double>(minutes) * 60, signs));
}

}  // namespace

SetupForm::SetupForm(QWidget* parent)
    : QWidget(parent),
      start_(new QDateEdit(QDate::currentDate(), this)),
      balance_(new QLineEdit("0:00", this)),
      startRefusal_(newRefusal(this, "start")),
      balanceRefusal_(newRefusal(this, "balance")),
      weekRefusal_(newRefusal(this, "week")),
      formRefusal_(newRefusal(this, "set-up")),
      submit_(new QPushButton("Set up", this)) {
  auto* title = new QLabel("<h2>Set up your time bank</h2>", this);
  auto* intro = new QLabel(
      "Quillmont counts from the day the calculation starts, adding what you work and book and taking what each "
      "day owes. You can change all of this later in Settings.",
      this);
  intro->setWordWrap(true);
  intro->setMaximumWidth(intro->fontMetrics().averageCharWidth() * 80);  // lines a reader can follow

  start_->setCalendarPopup(true);
  start_->setDisplayFormat("yyyy-MM-dd");
  start_->setAccessibleName("Calculation starts on");
  balance_->setAccessibleName("Starting balance");
  balance_->setPlaceholderText("e.g. 1:30 or -45");
  balance_->setToolTip("Minutes or hours you carry over: 90, -45, 1:30, 1h30m");

  auto* form = new QFormLayout;
  form->setFieldGrowthPolicy(QFormLayout::FieldsStayAtSizeHint);
  auto* startRow = new QHBoxLayout;
  startRow->addWidget(start_);
  startRow->addWidget(startRefusal_, 1);
  auto* startLabel = new QLabel("Calculation &starts on:", this);
  startLabel->setBuddy(start_);
  form->addRow(startLabel, startRow);
  auto* balanceRow = new QHBoxLayout;
  balanceRow->addWidget(balance_);
  balanceRow->addWidget(balanceRefusal_, 1);
  auto* balanceLabel = new QLabel("Starting &balance:", this);
  balanceLabel->setBuddy(balance_);
  form->addRow(balanceLabel, balanceRow);

  auto* weekBox = new QGroupBox("Time owed each weekday", this);
  auto* weekGrid = new QGridLayout(weekBox);
  for (std::size_t i = 0; i < week_.size(); ++i) {
    auto* field = new QLineEdit(weekBox);
    field->setAccessibleName(QString("Time owed on ") + weekdayNames[i]);
    field->setMaximumWidth(field->fontMetrics().horizontalAdvance("00:00000"));
    auto* label = new QLabel(QString(weekdayNames[i]) + ":", weekBox);
    label->setBuddy(field);
    const int row = static_cast<int>(i);
    weekGrid->addWidget(label, row, 0);
    weekGrid->addWidget(field, row, 1);
    week_[i] = field;
  }
  weekGrid->addWidget(weekRefusal_, 0, 2, 7, 1, Qt::AlignTop);
  weekGrid->setColumnStretch(2, 1);
  for (std::size_t i = 0; i < week_.size(); ++i) week_[i]->setText(clock(defaultWeekdayMinutes[i], false));

  submit_->setDefault(true);
  submit_->setAccessibleName("Set up");
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(formRefusal_, 1);
  buttons->addWidget(submit_, 0, Qt::AlignRight);

  // One column as wide as the introduction reads well, centred in the
  // window: the button stays under the form it submits however wide the
  // window is.
  auto* column = new QVBoxLayout;
  column->addWidget(title);
  column->addWidget(intro);
  column->addSpacing(8);
  column->addLayout(form);
  column->addWidget(weekBox);
  column->addLayout(buttons);
  auto* columnBox = new QWidget(this);
  columnBox->setLayout(column);
  column->setContentsMargins(0, 0, 0, 0);
  columnBox->setMaximumWidth(intro->maximumWidth());
  auto* centred = new QHBoxLayout;
  centred->addStretch(1);
  centred->addWidget(columnBox, 100);
  centred->addStretch(1);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(24, 24, 24, 24);
  layout->addLayout(centred);
  layout->addStretch(1);

  connect(submit_, &QPushButton::clicked, this, &SetupForm::apply);
  connect(balance_, &QLineEdit::returnPressed, this, &SetupForm::apply);
  for (QLineEdit* field : week_) connect(field, &QLineEdit::returnPressed, this, &SetupForm::apply);
}

void SetupForm::load(StoreSession& session) {
  const TimeBankSettings& settings = session.settings();
  const auto today = session.today();
  start_->setDate(QDate(today.year, today.month, today.day));
  balance_->setText(clock(settings.startingBalanceMinutes(), false));
  const auto week = settings.weekdayMinutes();
  for (std::size_t i = 0; i < week_.size() && i < week.size(); ++i) week_[i]->setText(clock(week[i], false));
}

QLabel* SetupForm::refusalLabel(const QString& field) const {
  if (field == "start") return startRefusal_;
  if (field == "balance") return balanceRefusal_;
  if (field == "week") return weekRefusal_;
  return formRefusal_;
}

QString SetupForm::refusal(const QString& field) const { return refusalLabel(field)->text(); }

void SetupForm::clearRefusals() {
  for (QLabel* label : {startRefusal_, balanceRefusal_, weekRefusal_, formRefusal_}) {
    label->clear();
    label->hide();
  }
}

void SetupForm::apply() {
  clearRefusals();
  try {
    Settings::Change change;
    const QDate day = start_->date();
    change.start = DateInput::Day{day.year(), day.month(), day.day()};
    change.balanceMinutes = Settings::startingBalance(TypedValue::minutes(balance_->text().toStdString(), "balance"));
    std::vector<std::int64_t> week;
    for (QLineEdit* field : week_) week.push_back(TypedValue::minutes(field->text().toStdString(), "week"));
    change.week = Settings::week(week, "week");
    StoreSession session;
    Settings::setup(session, change);
  } catch (const InvalidInput& refused) {
    QLabel* label = refusalLabel(QString::fromStdString(refused.field()));
    label->setText(WindowRemedies::sentence(refused.reason(), refused.remedy()));
    label->show();
    return;
  } catch (const std::exception& failure) {
    formRefusal_->setText(WindowRemedies::message(failure));
    formRefusal_->show();
    return;
  }
  emit completed();
}

}  // namespace quillmont
