// BookingForm: books time by hand: an amount in any form the command line
// reads (90, 1:30, -45m), a category (the offered built-in kinds and the
// person's own categories, each saying whether it adds or takes time), a
// note and a day. The booking use case decides; what it refuses is shown
// under the field it concerns, or under the form.
#pragma once

#include <QWidget>

#include "desktop/application/FieldProblems.h"

class QComboBox;
class QDateEdit;
class QLineEdit;
class QPushButton;

namespace quillmont {

class StoreSession;

class BookingForm final : public QWidget {
  Q_OBJECT

 public:
  explicit BookingForm(QWidget* parent = nullptr);

  /// Offers the categories of the store as it is now.
  void load(StoreSession& session);
  /// Fills `categories` with what a booking may be booked as: the offered
  /// built-in kinds (data: the raw value) and the person's own categories
  /// (data: the title), each saying whether it adds or takes time.
  static void offerCategories(QComboBox& categories, StoreSession& session);
  /// Names, hints and the calendar popup of a booking's four fields, the
  /// same wherever a booking is typed.
  static void prepareFields(QLineEdit& amount, QComboBox& category, QLineEdit& note, QDateEdit& day);
  /// Books what the form holds; on success the amount and note are emptied.
  void book();
  /// Puts the keyboard on the amount.
  void focusAmount();

  QLineEdit& amount() const { return *amount_; }
  QComboBox& category() const { return *category_; }
  QLineEdit& note() const { return *note_; }
  QDateEdit& day() const { return *day_; }
  QPushButton& bookButton() const { return *book_; }
  const FieldProblems& problems() const { return problems_; }

 signals:
  /// A booking was saved; `summary` says what was booked.
  void booked(const QString& summary);

 private:
  QLineEdit* amount_;
  QComboBox* category_;
  QLineEdit* note_;
  QDateEdit* day_;
  QPushButton* book_;
  FieldProblems problems_;
};

}  // namespace quillmont
