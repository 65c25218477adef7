// BookingDialog: changes one booking: its amount (typed in any form the
// command line reads), its category (offered as the booking form offers
// them), its note and its day (a date picker). What the person changed is
// handed to the booking use case, which applies the rules a new booking
// meets; what it refuses shows beside the field it concerns, or under the
// form. The dialog closes only when the change is saved.
#pragma once

#include <string>

#include <QDate>
#include <QDialog>

#include "app/history/History.h"
#include "desktop/application/FieldProblems.h"

class QComboBox;
class QDateEdit;
class QLineEdit;

namespace quillmont {

class StoreSession;

class BookingDialog final : public QDialog {
  Q_OBJECT

 public:
  /// `session` offers the categories and places the booking's day.
  BookingDialog(const History::Row& booking, StoreSession& session, QWidget* parent = nullptr);

  QLineEdit& amount() const { return *amount_; }
  QComboBox& category() const { return *category_; }
  QLineEdit& note() const { return *note_; }
  QDateEdit& day() const { return *day_; }
  const FieldProblems& problems() const { return problems_; }

  /// Saves what changed; closes the dialog when it went through (at once
  /// when nothing changed).
  void save();

 private:
  std::string identifier_;
  QString amountWas_;
  int categoryWas_ = 0;
  QString noteWas_;
  QDate dayWas_;
  QLineEdit* amount_;
  QComboBox* category_;
  QLineEdit* note_;
  QDateEdit* day_;
  FieldProblems problems_;
};

}  // namespace quillmont
