#include "desktop/application/OverviewPage.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QTimer>
#include <QVBoxLayout>

#include "app/session/StoreSession.h"
#include "app/text/Display.h"

namespace quillmont {
namespace {

QString text(const std::string& value) { return QString::fromStdString(value); }

QLabel* valueLabel(QWidget* parent, const QString& name) {
  auto* label = new QLabel(parent);
  label->setAccessibleName(name);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  return label;
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

}  // namespace

OverviewPage::OverviewPage(QWidget* parent)
    : Page(parent),
      balance_(valueLabel(this, "Balance")),
      today_(valueLabel(this, "Today")),
      worked_(valueLabel(this, "Worked today")),
      timer_(valueLabel(this, "Timer")),
      unsettledLabel_(new QLabel("Unsettled", this)),
      unsettled_(valueLabel(this, "Unsettled")),
      setUp_(new QLabel(this)),
      tick_(new QTimer(this)) {
  tick_->setInterval(60 * 1000);
  connect(tick_, &QTimer::timeout, this, [this] {
    if (isVisible()) refresh();
  });
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

  auto* figures = new QFormLayout;
  figures->setLabelAlignment(Qt::AlignRight);
  figures->setFormAlignment(Qt::AlignHCenter | Qt::AlignTop);
  figures->setHorizontalSpacing(16);
  figures->addRow("Today", today_);
  figures->addRow("Worked", worked_);
  figures->addRow("Timer", timer_);
  figures->addRow(unsettledLabel_, unsettled_);

  setUp_->setWordWrap(true);
  setUp_->setAlignment(Qt::AlignHCenter);
  setUp_->setAccessibleName("Set-up");
  setUp_->setText("Set-up is not complete. Finish it with, for example:\n"
                  "quillmont setup --start today --balance 0 --week 8h,8h,8h,8h,8h,0,0");
  setUp_->setTextInteractionFlags(Qt::TextSelectableByMouse);

  auto* note = new QLabel("The balance is the ledger of bookings; worked time feeds the reports.", this);
  note->setWordWrap(true);
  note->setAlignment(Qt::AlignHCenter);
  note->setForegroundRole(QPalette::PlaceholderText);

  QVBoxLayout* layout = pageLayout();
  layout->addStretch(1);
  layout->addWidget(caption);
  layout->addWidget(balance_);
  layout->addSpacing(16);
  // The figures stand as one block under the balance, centred with it.
  auto* centred = new QHBoxLayout;
  centred->addStretch(1);
  centred->addLayout(figures);
  centred->addStretch(1);
  layout->addLayout(centred);
  layout->addSpacing(16);
  layout->addWidget(setUp_);
  layout->addWidget(note);
  layout->addStretch(3);
  clear();
}

void OverviewPage::show(StoreSession& session) {
  figures_ = Overview::read(session);
  const Display display(session.calendar());
  balance_->setText(text(Display::amount(figures_.balanceSeconds)));
  today_->setText(todayLine(figures_));
  worked_->setText(text(Display::duration(figures_.todayWorkedSeconds)) + " today");
  timer_->setText(figures_.runningSince
                      ? "running since " + text(display.dateTime(*figures_.runningSince)) + " (" +
                            text(Display::duration(session.now() - *figures_.runningSince)) + ")"
                      : QString("not running"));
  const bool unsettled = figures_.unsettledSince.has_value();
  unsettled_->setText(unsettled ? text(Display::amount(figures_.unsettledSeconds)) + " since " +
                                      text(display.day(*figures_.unsettledSince)) +
                                      " (not in the balance until settled)"
                                : QString());
  unsettledLabel_->setVisible(unsettled);
  unsettled_->setVisible(unsettled);
  setUp_->setVisible(!figures_.isConfigured);
  if (figures_.runningSince) {
    if (!tick_->isActive()) tick_->start();
  } else {
    tick_->stop();
  }
}

void OverviewPage::clear() {
  figures_ = {};
  balance_->setText(QString::fromUtf8("\u2014"));
  for (QLabel* label : {today_, worked_, timer_, unsettled_}) label->clear();
  unsettledLabel_->hide();
  unsettled_->hide();
  setUp_->hide();
  tick_->stop();
}

QString OverviewPage::balanceText() const { return balance_->text(); }
QString OverviewPage::todayText() const { return today_->text(); }
QString OverviewPage::workedText() const { return worked_->text(); }
QString OverviewPage::timerText() const { return timer_->text(); }
QString OverviewPage::unsettledText() const { return unsettled_->text(); }

}  // namespace quillmont
