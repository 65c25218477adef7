#include "platform/widgets/WallClockAlarm.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <system_error>

namespace quillmont {
namespace {

[[noreturn]] void failWithErrno(const char* what) { throw std::system_error(errno, std::generic_category(), what); }

}  // namespace

WallClockAlarm::WallClockAlarm() : timer_(::timerfd_create(CLOCK_REALTIME, TFD_CLOEXEC | TFD_NONBLOCK)) {
  if (timer_ < 0) failWithErrno("creating a timer");
}

WallClockAlarm::~WallClockAlarm() { ::close(timer_); }

void WallClockAlarm::arm(Date instant) {
  // `instant` is on Date::now()'s clock, which a test may have moved: the
  // timer runs on the system's, shifted by the same amount.
  const double systemNow =
      std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
  const double since1970 = instant.timeIntervalSince1970() - (Date::now().timeIntervalSince1970() - systemNow);
  double whole = 0;
  const double fraction = std::modf(since1970, &whole);
  itimerspec deadline{};
  deadline.it_value.tv_sec = static_cast<time_t>(whole);
  deadline.it_value.tv_nsec = static_cast<long>(fraction * 1e9);
  // A zero value would disarm it; the earliest instant rings at once.
  if (deadline.it_value.tv_sec <= 0 && deadline.it_value.tv_nsec <= 0) {
    deadline.it_value.tv_sec = 0;
    deadline.it_value.tv_nsec = 1;
  }
  if (::timerfd_settime(timer_, TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &deadline, nullptr) != 0) {
    failWithErrno("arming a timer");
  }
}

void WallClockAlarm::disarm() {
  const itimerspec off{};
  ::timerfd_settime(timer_, 0, &off, nullptr);
}

WallClockAlarm::Ring WallClockAlarm::take() {
  std::uint64_t expirations = 0;
  if (::read(timer_, &expirations, sizeof expirations) == sizeof expirations) return Ring::due;
  return errno == ECANCELED ? Ring::clockChanged : Ring::notYet;
}

}  // namespace quillmont
