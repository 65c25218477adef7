#include "desktop/application/OverviewPage.h"

#include <cmath>
#include <exception>
#include <vector>

#include <QComboBox>
#include <QDateEdit>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include "app/bookings/Bookings.h"
#include "app/session/StoreSession.h"
#include "app/settlement/Settling.h"
#include "app/text/Display.h"
#include "app/work/Timer.h"
#include "core/ledger/QuickActionConfiguration.h"
#include "desktop/application/BookingForm.h"

namespace quillmont {
namespace {

QString text(const std::string& value) { return QString::fromStdString(value); }

QLabel* valueLabel(QWidget* parent, const QString& name) {
  auto* label = new QLabel(parent);
  label->setAccessibleName(name);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  return label;
}

QPushButton* button(QWidget* parent, const QString& label, const QString& name) {
  auto* pushed = new QPushButton(label, parent);
  pushed->setAccessibleName(name);
  pushed->setAutoDefault(false);
  return pushed;
}

// "+1:00 credited, −8:00 debited (net −7:00)"; only what happened.
QString todayLine(const Overview::Figures& figures) {
  const QString credited = text("+" + Display::duration(figures.todayCreditSeconds)) + " credited";
  const QString debited = text("\u2212" + Display::duration(figures.todayDebitSeconds)) + " debited";
  const bool anyCredit = figures.todayCreditSeconds > 0;
  const bool anyDebit = figures.todayDebitSeconds > 0;
  if (anyCredit && anyDebit) {
    return credited + ", " + debited + " (net " +
           text(Display::amount(figures.todayCreditSeconds - figures.todayDebitSeconds)) + ")";
  }
  if (anyCredit) return credited;
  if (anyDebit) return debited;
  return "nothing booked";
}

// A running time to the second: "1:05:09".
QString clock(double seconds) {
  const auto whole = static_cast<long long>(std::floor(std::max(0.0, seconds)));
  return QString("%1:%2:%3")
      .arg(whole / 3600)
      .arg(whole / 60 % 60, 2, 10, QChar('0'))
      .arg(whole % 60, 2, 10, QChar('0'));
}

}  // namespace

OverviewPage::OverviewPage(QWidget* parent)
    : Page(parent),
      balance_(valueLabel(this, "Balance")),
      today_(valueLabel(this, "Today")),
      worked_(valueLabel(this, "Worked today")),
      timer_(valueLabel(this, "Timer")),
      unsettledLabel_(new QLabel("Unsettled", this)),
      unsettled_(valueLabel(this, "Unsettled")),
      settle_(button(this, "Settle", "Settle")),
      setUp_(new QLabel(this)),
      timerNote_(new QLineEdit(this)),
      start_(button(this, "Start", "Start timer")),
      stop_(button(this, "Stop", "Stop timer")),
      cancel_(button(this, "Cancel", "Cancel timer")),
      continue_(button(this, "Continue", "Continue the last work")),
      form_(new BookingForm(this)),
      tick_(new QTimer(this)) {
  tick_->setInterval(1000);
  connect(tick_, &QTimer::timeout, this, &OverviewPage::showTimer);

  auto* caption = new QLabel("Balance", this);
  QFont captionFont = caption->font();
  captionFont.setPointSizeF(captionFont.pointSizeF() * 1.2);
  caption->setFont(captionFont);
  caption->setForegroundRole(QPalette::PlaceholderText);
  caption->setAlignment(Qt::AlignHCenter);

  QFont large = balance_->font();
  large.setPointSizeF(large.pointSizeF() * 4);
  large.setBold(true);
  balance_->setFont(large);
  balance_->setAlignment(Qt::AlignHCenter);

  settle_->setToolTip("Book each ended day's worked time less its planned time");
  connect(settle_, &QPushButton::clicked, this, [this] {
    act([](StoreSession& session) {
      const Settling::Result result = Settling::settle(session, {});
      if (result.booked.empty()) return QString("Nothing to settle.");
      return QString("Settled %1 %2: %3.")
          .arg(result.booked.size())
          .arg(result.booked.size() == 1 ? "day" : "days")
          .arg(text(Display::amountOfMinutes(result.minutes)));
    });
  });
  auto* unsettledRow = new QHBoxLayout;
  unsettledRow->addWidget(unsettled_);
  unsettledRow->addSpacing(12);
  unsettledRow->addWidget(settle_);

  auto* figures = new QFormLayout;
  figures->setLabelAlignment(Qt::AlignRight);
  figures->setFormAlignment(Qt::AlignHCenter | Qt::AlignTop);
  figures->setHorizontalSpacing(16);
  figures->addRow("Today", today_);
  figures->addRow("Worked", worked_);
  figures->addRow(unsettledLabel_, unsettledRow);

  setUp_->setWordWrap(true);
  setUp_->setAlignment(Qt::AlignHCenter);
  setUp_->setAccessibleName("Set-up");
  setUp_->setText("Set-up is not complete: the balance counts from the calculation start once it is.");

  // The timer: a note for the work it starts, and what can be done now.
  timerNote_->setAccessibleName("Timer note");
  timerNote_->setPlaceholderText("What are you working on? (optional)");
  timerNote_->setClearButtonEnabled(true);
  connect(timerNote_, &QLineEdit::returnPressed, start_, &QPushButton::click);
  connect(start_, &QPushButton::clicked, this, [this] {
    const std::string note = timerNote_->text().toStdString();
    act([note](StoreSession& session) {
      Timer::start(session, {.at = "", .note = note, .force = false});
      return QString("The timer runs.");
    });
    if (figures_.runningSince) timerNote_->clear();
  });
  connect(continue_, &QPushButton::clicked, this, [this] {
    act([](StoreSession& session) {
      Timer::resume(session, {});
      return QString("The timer runs again.");
    });
  });
  connect(stop_, &QPushButton::clicked, this, [this] {
    act([](StoreSession& session) {
      const auto ended = Timer::stop(session, "");
      return "Stopped: " + text(Display::duration(ended->endedAt().value_or(session.now()) - ended->startedAt())) +
             " recorded.";
    });
  });
  connect(cancel_, &QPushButton::clicked, this, [this] {
    act([](StoreSession& session) {
      Timer::cancel(session);
      return QString("The timer was cancelled; nothing was recorded.");
    });
  });
  auto* timerBox = new QGroupBox("Timer", this);
  auto* timerLayout = new QVBoxLayout(timerBox);
  QFont running = timer_->font();
  running.setPointSizeF(running.pointSizeF() * 1.4);
  timer_->setFont(running);
  timerLayout->addWidget(timer_);
  timerLayout->addWidget(timerNote_);
  auto* timerButtons = new QHBoxLayout;
  for (QPushButton* each : {start_, continue_, stop_, cancel_}) timerButtons->addWidget(each);
  timerButtons->addStretch(1);
  timerLayout->addLayout(timerButtons);
  timerLayout->addStretch(1);

  // The quick actions: each amount added (top row) or taken (bottom row).
  auto* quickBox = new QGroupBox("Quick actions", this);
  auto* quickGrid = new QGridLayout(quickBox);
  for (std::size_t index = 0; index < quick_.size(); ++index) {
    const bool adds = index < 4;
    quick_[index] = button(quickBox, "", "");
    quickGrid->addWidget(quick_[index], adds ? 0 : 1, static_cast<int>(index % 4));
    connect(quick_[index], &QPushButton::clicked, this, [this, index, adds] {
      const std::int64_t minutes = (adds ? 1 : -1) * quickMinutes_[index % 4];
      act([minutes](StoreSession& session) {
        Bookings::Request request;
        request.minutes = minutes;
        request.amountText = (minutes > 0 ? "+" : "") + std::to_string(minutes);
        const Bookings::Booked booked = Bookings::add(session, request);
        return "Booked " + text(Display::amountOfMinutes(minutes)) + "; the balance is now " +
               text(Display::amount(booked.balanceSeconds)) + ".";
      });
    });
  }

  auto* formBox = new QGroupBox("Book time", this);
  auto* formLayout = new QVBoxLayout(formBox);
  formLayout->addWidget(form_);
  connect(form_, &BookingForm::booked, this, [this](const QString& summary) {
    refresh();
    problems_.show("", summary);
  });

  QLabel* message = problems_.lineFor("", this);
  message->setAlignment(Qt::AlignHCenter);
  QFont plain = message->font();
  plain.setItalic(false);
  message->setFont(plain);
  message->setAccessibleName("Message");

  QVBoxLayout* layout = pageLayout();
  layout->addStretch(1);
  layout->addWidget(caption);
  layout->addWidget(balance_);
  layout->addSpacing(8);
  // The figures stand as one block under the balance, centred with it.
  auto* centred = new QHBoxLayout;
  centred->addStretch(1);
  centred->addLayout(figures);
  centred->addStretch(1);
  layout->addLayout(centred);
  layout->addWidget(setUp_);
  layout->addWidget(message);
  layout->addSpacing(8);
  auto* actions = new QHBoxLayout;
  actions->addWidget(timerBox, 1);
  actions->addWidget(quickBox, 1);
  layout->addLayout(actions);
  layout->addWidget(formBox);
  layout->addStretch(1);

  // Tab follows the page as it reads: timer, quick actions, then the form.
  std::vector<QWidget*> order{settle_, timerNote_, start_, continue_, stop_, cancel_};
  order.insert(order.end(), quick_.begin(), quick_.end());
  order.insert(order.end(), {&form_->amount(), &form_->category(), &form_->note(), &form_->day(), &form_->bookButton()});
  for (std::size_t index = 1; index < order.size(); ++index) setTabOrder(order[index - 1], order[index]);
  clear();
}

void OverviewPage::show(StoreSession& session) {
  figures_ = Overview::read(session);
  const Display display(session.calendar());
  balance_->setText(text(Display::amount(figures_.balanceSeconds)));
  today_->setText(todayLine(figures_));
  worked_->setText(text(Display::duration(figures_.todayWorkedSeconds)) + " today");
  const bool unsettled = figures_.unsettledSince.has_value();
  unsettled_->setText(unsettled ? text(Display::amount(figures_.unsettledSeconds)) + " since " +
                                      text(display.day(*figures_.unsettledSince)) +
                                      " (not in the balance until settled)"
                                : QString());
  unsettledLabel_->setVisible(unsettled);
  unsettled_->setVisible(unsettled);
  settle_->setVisible(unsettled);
  setUp_->setVisible(!figures_.isConfigured);

  const bool running = figures_.runningSince.has_value();
  runningSince_ = running ? text(display.dateTime(*figures_.runningSince)) : QString();
  for (QWidget* idle : {static_cast<QWidget*>(timerNote_), static_cast<QWidget*>(start_),
                        static_cast<QWidget*>(continue_)}) {
    idle->setVisible(!running);
  }
  stop_->setVisible(running);
  cancel_->setVisible(running);

  const auto amounts = session.settings().quickActionMinutes();
  for (std::size_t index = 0; index < quick_.size(); ++index) {
    const std::int64_t minutes = amounts[index % 4];
    quickMinutes_[index % 4] = minutes;
    const bool adds = index < 4;
    const QString name = text(QuickActionConfiguration::displayName(minutes));
    quick_[index]->setText((adds ? "+" : QString::fromUtf8("\u2212")) + name);
    quick_[index]->setAccessibleName((adds ? "Add " : "Take ") + name);
    quick_[index]->setEnabled(true);
  }
  form_->load(session);
  form_->setEnabled(true);
  showTimer();
  updateTicking();
}

void OverviewPage::clear() {
  figures_ = {};
  balance_->setText(QString::fromUtf8("\u2014"));
  for (QLabel* label : {today_, worked_, timer_, unsettled_}) label->clear();
  unsettledLabel_->hide();
  unsettled_->hide();
  settle_->hide();
  setUp_->hide();
  stop_->hide();
  cancel_->hide();
  for (QPushButton* quick : quick_) quick->setEnabled(false);
  form_->setEnabled(false);
  tick_->stop();
}

void OverviewPage::showTimer() {
  if (!figures_.runningSince) {
    timer_->setText("not running");
    return;
  }
  timer_->setText("running since " + runningSince_ + " (" +
                  clock(Date::now() - *figures_.runningSince) + ")");
}

void OverviewPage::updateTicking() {
  if (figures_.runningSince && isVisible()) {
    if (!tick_->isActive()) tick_->start();
  } else {
    tick_->stop();
  }
}

bool OverviewPage::ticking() const { return tick_->isActive(); }

void OverviewPage::showEvent(QShowEvent* event) {
  Page::showEvent(event);
  showTimer();
  updateTicking();
}

void OverviewPage::hideEvent(QHideEvent* event) {
  Page::hideEvent(event);
  tick_->stop();
}

void OverviewPage::act(const std::function<QString(StoreSession&)>& action) {
  QString outcome;
  const bool done = problems_.attempt([&] {
    StoreSession session;
    outcome = action(session);
  });
  refresh();
  if (done) problems_.show("", outcome);
}

void OverviewPage::focusBookingForm() { form_->focusAmount(); }

QString OverviewPage::balanceText() const { return balance_->text(); }
QString OverviewPage::todayText() const { return today_->text(); }
QString OverviewPage::workedText() const { return worked_->text(); }
QString OverviewPage::timerText() const { return timer_->text(); }
QString OverviewPage::unsettledText() const { return unsettled_->text(); }
QString OverviewPage::message() const { return problems_.text(""); }

}  // namespace quillmont
