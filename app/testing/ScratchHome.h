// ScratchHome: a data home of its own for one test of the use cases: the
// store, preferences and widget files land in a fresh temporary folder,
// which goes with everything in it when the test ends; the clock stands at
// the given instant. The process's zone stays what it is (UTC under ctest).
#pragma once

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

#include "platform/foundation/Date.h"

namespace quillmont::testing {

class ScratchHome {
 public:
  explicit ScratchHome(Date now) : clock_(now) {
    std::string pattern = (std::filesystem::temp_directory_path() / "quillmont-app-XXXXXX").string();
    folder_ = mkdtemp(pattern.data());
    if (const char* previous = std::getenv("QUILLMONT_HOME")) previous_ = previous;
    setenv("QUILLMONT_HOME", folder_.c_str(), 1);
  }
  ~ScratchHome() {
    if (previous_) {
      setenv("QUILLMONT_HOME", previous_->c_str(), 1);
    } else {
      unsetenv("QUILLMONT_HOME");
    }
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }
  ScratchHome(const ScratchHome&) = delete;
  ScratchHome& operator=(const ScratchHome&) = delete;

 private:
  Date::ScopedClock clock_;
  std::filesystem::path folder_;
  std::optional<std::string> previous_;
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
