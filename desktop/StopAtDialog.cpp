#include "desktop/StopAtDialog.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QTimeEdit>
#include <QVBoxLayout>

#include "desktop/ForgottenTimer.h"

namespace quillmont {

StopAtDialog::StopAtDialog(QWidget* parent)
    : QDialog(parent), time_(new QTimeEdit(QTime::currentTime(), this)), refusal_(new QLabel(this)) {
  setWindowTitle("Stop the timer");
  setModal(false);
  time_->setDisplayFormat("HH:mm");
  time_->setAccessibleName("Stopped at");
  refusal_->setWordWrap(true);
  refusal_->setAccessibleName("Refusal of the time");
  refusal_->hide();
  auto* form = new QFormLayout;
  auto* label = new QLabel("Work &ended at:", this);
  label->setBuddy(time_);
  form->addRow(label, time_);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
  buttons->button(QDialogButtonBox::Ok)->setText("Stop");
  connect(buttons, &QDialogButtonBox::accepted, this, &StopAtDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(new QLabel("The timer has run for a long time. When did the work end today?", this));
  layout->addLayout(form);
  layout->addWidget(refusal_);
  layout->addWidget(buttons);
}

QString StopAtDialog::refusal() const { return refusal_->text(); }

void StopAtDialog::accept() {
  const QString refused = ForgottenTimer::stopAt(time_->time().toString("HH:mm"));
  if (!refused.isEmpty()) {
    refusal_->setText(refused);
    refusal_->show();
    return;
  }
  QDialog::accept();
}

}  // namespace quillmont
