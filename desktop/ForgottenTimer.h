// ForgottenTimer: watches the running work timer while the program runs and
// says once per timer run when it has run longer than the person's limit
// (ApplicationPreferences::forgottenTimerHours). It reads the store when
// asked to look again (at start, whenever the store changes) and otherwise
// sleeps until the moment the timer would become forgotten, so an idle
// program does no work. Stopping the timer now or at a time goes through
// the timer's own use case.
#pragma once

#include <optional>

#include <QObject>
#include <QString>
#include <QTimer>

#include "platform/foundation/Date.h"

namespace quillmont {

class ForgottenTimer final : public QObject {
  Q_OBJECT

 public:
  explicit ForgottenTimer(QObject* parent = nullptr);

  /// Seconds until a timer started at `since` counts as forgotten at `now`
  /// after `hours`; zero when it already does.
  static double secondsUntilForgotten(Date since, Date now, int hours);

  /// Reads the running timer and the limit again; says `forgotten` when the
  /// timer is past its limit and was not said to be for this run yet.
  void check();
  /// When the timer of the run it watches becomes forgotten; none when no
  /// timer runs or it was already said.
  std::optional<Date> dueAt() const { return dueAt_; }

  /// Stops the running timer now; the refusal's text when it cannot.
  static QString stopNow();
  /// Stops the running timer at `time` (HH:MM, today); the refusal's text when it cannot.
  static QString stopAt(const QString& time);

 signals:
  /// The timer started at `since` has run `hours` or longer.
  void forgotten(Date since, int hours);

 private:
  QTimer wake_;
  std::optional<Date> dueAt_;
  /// The start of the run already said to be forgotten.
  std::optional<Date> said_;
};

}  // namespace quillmont
