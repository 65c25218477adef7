#include "platform/foundation/Date.h"

#include <chrono>
#include <utility>

namespace quillmont {
namespace {

std::function<Date()>& installedClock() {
  static std::function<Date()> clock;
  return clock;
}

}  // namespace

Date Date::now() {
  if (const auto& clock = installedClock()) return clock();
  const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  return fromTimeIntervalSince1970(std::chrono::duration<double>(sinceEpoch).count());
}

Date::ScopedClock::ScopedClock(std::function<Date()> clock) : previous_(std::exchange(installedClock(), std::move(clock))) {}

Date::ScopedClock::ScopedClock(Date fixed) : ScopedClock([fixed] { return fixed; }) {}

Date::ScopedClock::~ScopedClock() { installedClock() = std::move(previous_); }

}  // namespace quillmont
