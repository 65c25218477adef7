// OverviewPage: the balance in large digits and today's figures below it:
// what was credited and debited today, the time worked, what is not settled
// yet (with the action that settles it), and a note while set-up is not
// complete. Below them, the timer (start with a note, stop, cancel,
// continue; its running time ticks each second while the page is seen),
// the four quick-action amounts as buttons that add or take time, and the
// booking form. Every action goes through the application layer in a
// session of its own; the page reads itself again after it.
#pragma once

#include <array>

#include "app/overview/Overview.h"
#include "desktop/application/FieldProblems.h"
#include "desktop/application/Page.h"

class QLabel;
class QLineEdit;
class QPushButton;
class QTimer;

namespace quillmont {

class BookingForm;

class OverviewPage final : public Page {
  Q_OBJECT

 public:
  explicit OverviewPage(QWidget* parent = nullptr);

  /// The figures last shown.
  const Overview::Figures& figures() const { return figures_; }
  QString balanceText() const;
  QString todayText() const;
  QString workedText() const;
  QString timerText() const;
  QString unsettledText() const;
  /// What the last action said (done or refused).
  QString message() const;

  BookingForm& bookingForm() const { return *form_; }
  /// Puts the keyboard on the booking form's amount.
  void focusBookingForm();

  QPushButton& settleButton() const { return *settle_; }
  QLineEdit& timerNote() const { return *timerNote_; }
  QPushButton& startButton() const { return *start_; }
  QPushButton& stopButton() const { return *stop_; }
  QPushButton& cancelButton() const { return *cancel_; }
  QPushButton& continueButton() const { return *continue_; }
  /// The quick actions: [0..3] add the four amounts, [4..7] take them.
  QPushButton& quickButton(std::size_t index) const { return *quick_[index]; }
  bool ticking() const;

 protected:
  void show(StoreSession& session) override;
  void clear() override;
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;

 private:
  /// Runs an action in a session of its own; its outcome or refusal is shown.
  void act(const std::function<QString(StoreSession&)>& action);
  void showTimer();
  void updateTicking();

  Overview::Figures figures_;
  /// When the running timer started, as shown.
  QString runningSince_;
  QLabel* balance_;
  QLabel* today_;
  QLabel* worked_;
  QLabel* timer_;
  QLabel* unsettledLabel_;
  QLabel* unsettled_;
  QPushButton* settle_;
  QLabel* setUp_;
  QLineEdit* timerNote_;
  QPushButton* start_;
  QPushButton* stop_;
  QPushButton* cancel_;
  QPushButton* continue_;
  std::array<QPushButton*, 8> quick_{};
  std::array<std::int64_t, 4> quickMinutes_{};
  BookingForm* form_;
  FieldProblems problems_;
  /// Advances the running time each second while a timer runs and the page is seen.
  QTimer* tick_;
};

}  // namespace quillmont
