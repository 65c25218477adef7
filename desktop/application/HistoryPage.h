// HistoryPage: every booking and work entry, newest first, with the balance
// after each booking, in one table view over a HistoryModel. A filter row
// narrows it to a range of days and to bookings or work; a toolbar edits
// the selected record (a booking in a BookingDialog, a work entry in a
// WorkEntryDialog), deletes it after asking, and takes back the last change. What a change could not do shows above the list.
#pragma once

#include <optional>

#include "platform/foundation/Calendar.h"
#include "desktop/application/Page.h"

class QAction;
class QComboBox;
class QDateEdit;
class QLabel;
class QMessageBox;
class QTableView;
class QToolBar;

namespace quillmont {

class BookingDialog;
class HistoryModel;
class WorkEntryDialog;

class HistoryPage final : public Page {
  Q_OBJECT

 public:
  /// The ranges the filter offers, in the order it offers them.
  enum Range { allTime, today, lastSevenDays, lastThirtyDays, thisYear, between };

  explicit HistoryPage(QWidget* parent = nullptr);

  HistoryModel& model() const { return *model_; }
  QTableView& view() const { return *view_; }
  QComboBox& range() const { return *range_; }
  QComboBox& kinds() const { return *kinds_; }
  QDateEdit& from() const { return *from_; }
  QDateEdit& to() const { return *to_; }
  QAction& editAction() const { return *edit_; }
  QAction& deleteAction() const { return *delete_; }
  QAction& undoAction() const { return *undo_; }
  /// What the last change said (done or refused).
  QString message() const;
  /// The dialog or question open now, if any.
  WorkEntryDialog* editDialog() const { return editDialog_; }
  BookingDialog* bookingDialog() const { return bookingDialog_; }
  QMessageBox* deleteQuestion() const { return question_; }

  /// Puts the keyboard on the filter row.
  void focusFilter();
  /// Takes back the last change the store journaled; a refusal is shown.
  void undo();
  /// Opens the edit dialog for the selected booking or work entry.
  void editSelected();
  /// Asks whether to delete the selected record, and deletes it on yes.
  void deleteSelected();

 protected:
  void show(StoreSession& session) override;
  void clear() override;

 private:
  void applyFilter();
  void updateActions();
  void say(const QString& text);
  /// Runs a change in a session of its own, shows a refusal, reads the page again.
  void change(const std::function<QString(StoreSession&)>& action);

  HistoryModel* model_;
  QToolBar* tools_;
  QComboBox* range_;
  QComboBox* kinds_;
  QDateEdit* from_;
  QDateEdit* to_;
  QTableView* view_;
  QLabel* empty_;
  QLabel* message_;
  QAction* edit_;
  QAction* delete_;
  QAction* undo_;
  /// Opens a dialog window-modal; `open` is cleared when it closes, and a
  /// saved change reads the page again and says `done`.
  template <class Dialog>
  void openEditor(Dialog* dialog, Dialog*& open, const QString& done);

  WorkEntryDialog* editDialog_ = nullptr;
  BookingDialog* bookingDialog_ = nullptr;
  QMessageBox* question_ = nullptr;
  std::optional<Calendar> calendar_;
};

}  // namespace quillmont
