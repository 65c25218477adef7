// WallClockAlarm: one instant on the wall clock to wake at, as a descriptor
// that an event loop can watch. It keeps to the wall clock, so it fires on
// time after a suspend, and it wakes early, telling why, when the system
// clock is set (the instant may then be hours away or already past).
#pragma once

#include "platform/foundation/Date.h"

namespace quillmont {

class WallClockAlarm {
 public:
  enum class Ring { notYet, due, clockChanged };

  /// Throws std::system_error when the system offers no such timer.
  WallClockAlarm();
  ~WallClockAlarm();
  WallClockAlarm(const WallClockAlarm&) = delete;
  WallClockAlarm& operator=(const WallClockAlarm&) = delete;

  /// Rings at `instant` of Date::now()'s clock (at once when it is past),
  /// replacing any earlier instant; throws std::system_error.
  void arm(Date instant);
  void disarm();
  /// Readable when the alarm rings.
  int fileDescriptor() const { return timer_; }
  /// Consumes a ring: due, clockChanged, or notYet when it has not rung.
  Ring take();

 private:
  int timer_ = -1;
};

}  // namespace quillmont
