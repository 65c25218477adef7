// Date: an absolute instant, seconds since 2001-01-01 00:00:00 UTC (the
// reference date), as a double. TimeInterval is a duration in seconds.
//
// Date::now() reads the system clock unless a test has installed a fixed
// clock with Date::ScopedClock; everything that needs "the current time"
// calls Date::now() so that tests control it.
#pragma once

#include <compare>
#include <functional>

namespace quillmont {

using TimeInterval = double;

struct Date {
  /// Seconds between 1970-01-01 and 2001-01-01, both UTC.
  static constexpr TimeInterval timeIntervalBetween1970AndReferenceDate = 978307200.0;

  TimeInterval timeIntervalSinceReferenceDate = 0;

  constexpr Date() = default;
  constexpr explicit Date(TimeInterval sinceReferenceDate) : timeIntervalSinceReferenceDate(sinceReferenceDate) {}

  static constexpr Date fromTimeIntervalSince1970(TimeInterval seconds) {
    return Date(seconds - timeIntervalBetween1970AndReferenceDate);
  }
  constexpr TimeInterval timeIntervalSince1970() const {
    return timeIntervalSinceReferenceDate + timeIntervalBetween1970AndReferenceDate;
  }
  constexpr TimeInterval timeIntervalSince(Date other) const {
    return timeIntervalSinceReferenceDate - other.timeIntervalSinceReferenceDate;
  }
  constexpr Date addingTimeInterval(TimeInterval seconds) const {
    return Date(timeIntervalSinceReferenceDate + seconds);
  }

  /// The current instant: the installed test clock if any, else the system clock.
  static Date now();

  /// Replaces the clock for as long as it lives (tests only). Not thread-safe:
  /// install it before starting work that reads the clock.
  class ScopedClock {
   public:
    explicit ScopedClock(std::function<Date()> clock);
    explicit ScopedClock(Date fixed);
    ~ScopedClock();
    ScopedClock(const ScopedClock&) = delete;
    ScopedClock& operator=(const ScopedClock&) = delete;

   private:
    std::function<Date()> previous_;
  };

  friend constexpr bool operator==(Date, Date) = default;
  friend constexpr auto operator<=>(Date a, Date b) {
    return a.timeIntervalSinceReferenceDate <=> b.timeIntervalSinceReferenceDate;
  }
};

constexpr Date operator+(Date date, TimeInterval seconds) { return date.addingTimeInterval(seconds); }
constexpr Date operator-(Date date, TimeInterval seconds) { return date.addingTimeInterval(-seconds); }
constexpr TimeInterval operator-(Date a, Date b) { return a.timeIntervalSince(b); }

}  // namespace quillmont
