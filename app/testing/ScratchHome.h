// ScratchHome: a data home of its own for one test of the use cases (a
// TemporaryHome: the store, preferences and widget files land in a fresh
// temporary folder, which goes with everything in it when the test ends),
// and the clock standing at the given instant. The process's zone stays what it is (UTC under ctest).
#pragma once

#include <filesystem>

#include "app/testing/TemporaryHome.h"
#include "platform/foundation/Date.h"

namespace quillmont::testing {

class ScratchHome {
 public:
  explicit ScratchHome(Date now) : clock_(now) {}

  const std::filesystem::path& folder() const { return home_.folder(); }

 private:
  TemporaryHome home_;
  Date::ScopedClock clock_;
};

/// An instant by its UTC wall clock: utc(2026, 3, 2, 9, 30).
inline Date utc(int year, int month, int day, int hour = 0, int minute = 0) {
  // Days from 1970-01-01 in the proleptic Gregorian calendar.
  const int y = year - (month <= 2);
  const int era = (y >= 0 ? y : y - 399) / 400;
  const int yoe = y - era * 400;
  const int doy = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
  const int doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  const long days = static_cast<long>(era) * 146097 + doe - 719468;
  return Date::fromTimeIntervalSince1970(static_cast<double>(days) * 86400 + hour * 3600 + minute * 60);
}

}  // namespace quillmont::testing
