#include "desktop/ForgottenTimer.h"

#include <algorithm>
#include <exception>

#include "app/preferences/ApplicationPreferences.h"
#include "app/session/StoreSession.h"
#include "app/work/Timer.h"

namespace quillmont {

ForgottenTimer::ForgottenTimer(QObject* parent) : QObject(parent) {
  wake_.setSingleShot(true);
  connect(&wake_, &QTimer::timeout, this, &ForgottenTimer::check);
}

double ForgottenTimer::secondsUntilForgotten(Date since, Date now, int hours) {
  return std::max(0.0, since.addingTimeInterval(hours * 3600.0).timeIntervalSince(now));
}

void ForgottenTimer::check() {
  wake_.stop();
  dueAt_.reset();
  std::optional<Date> since;
  Date now;
  try {
    StoreSession session;
    if (const auto running = Timer::running(session)) since = running->startedAt();
    now = session.now();
  } catch (const std::exception&) {
    return;  // the store is unreadable now; the next change looks again
  }
  if (!since || since == said_) return;
  const int hours = ApplicationPreferences().forgottenTimerHours();
  const double left = secondsUntilForgotten(*since, now, hours);
  if (left <= 0) {
    said_ = since;
    emit forgotten(*since, hours);
    return;
  }
  dueAt_ = now.addingTimeInterval(left);
  // Timers wait at most about 24 days; a longer wait is taken in steps.
  wake_.start(static_cast<int>(std::min(left * 1000.0 + 500.0, 2.0e9)));
}

namespace {

QString stopped(const std::string& at) {
  try {
    StoreSession session;
    Timer::stop(session, at);
    return {};
  } catch (const std::exception& refused) {
    return QString::fromUtf8(refused.what());
  }
}

}  // namespace

QString ForgottenTimer::stopNow() { return stopped({}); }

QString ForgottenTimer::stopAt(const QString& time) { return stopped(time.toStdString()); }

}  // namespace quillmont
