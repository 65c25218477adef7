// WorkEntryDialog: changes one work entry: its start, end, break and note,
// typed as the command line reads them (a time alone is on the entry's own
// day). The application layer checks the change: an end before the start,
// an entry over 24 hours and one that overlaps other work (named) are
// refused beside their field or under the form, and "Save anyway" lets a
// person keep a long or overlapping entry on purpose. The dialog closes
// only when the change is saved.
#pragma once

#include <QDialog>

#include "app/history/History.h"
#include "desktop/application/FieldProblems.h"

class QCheckBox;
class QLineEdit;

namespace quillmont {

class Calendar;

class WorkEntryDialog final : public QDialog {
  Q_OBJECT

 public:
  WorkEntryDialog(const History::Row& entry, const Calendar& calendar, QWidget* parent = nullptr);

  QLineEdit& start() const { return *start_; }
  QLineEdit& end() const { return *end_; }
  QLineEdit& breakTime() const { return *break_; }
  QLineEdit& note() const { return *note_; }
  QCheckBox& anyway() const { return *anyway_; }
  const FieldProblems& problems() const { return problems_; }

  /// Saves the change; closes the dialog when it went through.
  void save();

 private:
  std::string identifier_;
  QLineEdit* start_;
  QLineEdit* end_;
  QLineEdit* break_;
  QLineEdit* note_;
  QCheckBox* anyway_;
  FieldProblems problems_;
};

}  // namespace quillmont
