#include "desktop/application/WorkEntryDialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/session/StoreSession.h"
#include "app/text/Display.h"
#include "app/work/WorkEntries.h"

namespace quillmont {
namespace {

QLineEdit* field(QWidget* parent, const QString& name, const QString& value, const QString& example) {
  auto* edit = new QLineEdit(value, parent);
  edit->setAccessibleName(name);
  edit->setPlaceholderText(example);
  edit->setClearButtonEnabled(true);
  return edit;
}

}  // namespace

WorkEntryDialog::WorkEntryDialog(const History::Row& entry, const Calendar& calendar, QWidget* parent)
    : QDialog(parent), identifier_(entry.id.uuidString()) {
  const Display display(calendar);
  setWindowTitle("Edit Work");
  setAccessibleName("Edit work");
  start_ = field(this, "Start", QString::fromStdString(display.dateTime(entry.date)), "2026-03-15 09:30 or 09:30");
  end_ = field(this, "End", entry.endedAt ? QString::fromStdString(display.dateTime(*entry.endedAt)) : QString(),
               "17:00");
  // A running entry has no end to change: stopping the timer ends it.
  end_->setEnabled(entry.endedAt.has_value());
  break_ = field(this, "Break",
                 QString::fromStdString(Display::duration(static_cast<double>(entry.breakMinutes) * 60.0)),
                 "30, 0:30 or 30m");
  note_ = field(this, "Note", QString::fromStdString(entry.note), "");
  anyway_ = new QCheckBox("Save &anyway, even if it overlaps other work or lasts over 24 hours", this);
  anyway_->setAccessibleName("Save anyway");

  auto* form = new QFormLayout;
  form->addRow("&Start", problems_.withLine(start_, "start", this));
  form->addRow("&End", problems_.withLine(end_, "end", this));
  form->addRow("&Break", problems_.withLine(break_, "break", this));
  form->addRow("&Note", problems_.withLine(note_, "note", this));
  auto* hint = new QLabel("A time alone is on the entry's own day.", this);
  hint->setForegroundRole(QPalette::PlaceholderText);

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel, this);
  connect(buttons, &QDialogButtonBox::accepted, this, &WorkEntryDialog::save);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addWidget(hint);
  layout->addWidget(anyway_);
  layout->addWidget(problems_.lineFor("", this));
  layout->addWidget(buttons);
  setMinimumWidth(fontMetrics().horizontalAdvance('0') * 60);
}

void WorkEntryDialog::save() {
  WorkEntries::Request request;
  request.start = start_->text().trimmed().toStdString();
  if (end_->isEnabled()) request.end = end_->text().trimmed().toStdString();
  request.breakTime = break_->text().trimmed().toStdString();
  request.note = note_->text().toStdString();
  request.force = anyway_->isChecked();
  const bool saved = problems_.attempt([&] {
    StoreSession session;
    WorkEntries::edit(session, identifier_, request);
  });
  if (saved) accept();
}

}  // namespace quillmont
