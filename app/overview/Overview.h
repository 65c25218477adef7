// Overview: today's figures, as the screen the program opens on shows them:
// the ledger balance and today's credits and debits (the widget's own
// figures), the time worked today (a running entry up to now, time several
// entries cover counted once), the timer, whether set-up is complete, and
// what settling through yesterday would book and from which day.
#pragma once

#include <optional>

#include "platform/foundation/Date.h"

namespace quillmont {

class StoreSession;

namespace Overview {

struct Figures {
  double balanceSeconds = 0;
  double todayCreditSeconds = 0;
  double todayDebitSeconds = 0;
  double todayWorkedSeconds = 0;
  /// When the running timer started; nothing when no timer runs.
  std::optional<Date> runningSince;
  bool isConfigured = false;
  /// What settling through yesterday would book, and its first day
  /// (nothing when nothing is unsettled or set-up is not complete).
  double unsettledSeconds = 0;
  std::optional<Date> unsettledSince;
};

/// Reads the figures of an open store at the session's instant.
Figures read(StoreSession& session);

}  // namespace Overview
}  // namespace quillmont
