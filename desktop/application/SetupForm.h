// SetupForm: what the Quillmont window shows while the time bank is not set
// up: the day the calculation starts, the starting balance and the minutes
// owed on each weekday, filled with the settings' defaults. "Set up" applies
// them through the settings' set-up in one store session; a value the
// settings refuse is shown beside its field and nothing changes.
#pragma once

#include <array>

#include <QWidget>

class QDateEdit;
class QLabel;
class QLineEdit;
class QPushButton;

namespace quillmont {

class StoreSession;

class SetupForm final : public QWidget {
  Q_OBJECT

 public:
  explicit SetupForm(QWidget* parent = nullptr);

  /// Fills the fields with the settings of an open store.
  void load(StoreSession& session);

  QDateEdit& start() const { return *start_; }
  QLineEdit& balance() const { return *balance_; }
  QLineEdit& weekday(int index) const { return *week_[static_cast<std::size_t>(index)]; }
  QPushButton& submit() const { return *submit_; }
  /// The refusal shown beside a field ("start", "balance", "week"), or below
  /// the form for the request as a whole ("").
  QString refusal(const QString& field) const;

 signals:
  /// The bank is set up now.
  void completed();

 private:
  void apply();
  void clearRefusals();
  QLabel* refusalLabel(const QString& field) const;

  QDateEdit* start_;
  QLineEdit* balance_;
  std::array<QLineEdit*, 7> week_{};
  QLabel* startRefusal_;
  QLabel* balanceRefusal_;
  QLabel* weekRefusal_;
  QLabel* formRefusal_;
  QPushButton* submit_;
};

}  // namespace quillmont
