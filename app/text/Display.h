// Display: how the command line shows instants, amounts and identifiers.
// Days and times are ISO 8601 in the user's time zone (Gregorian for every
// day, before 1582 too, whatever calendar the locale prefers, so what is
// shown is what DateInput reads back); amounts
// are clock durations as the widget shows them ("+7:30", U+2212 for minus);
// identifiers are shown by their first eight hexadecimal digits.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/foundation/Calendar.h"
#include "platform/foundation/Date.h"
#include "platform/foundation/DateFormatter.h"
#include "platform/foundation/UUID.h"

namespace quillmont {

class Display {
 public:
  static constexpr std::size_t shortIdentifierLength = 8;

  explicit Display(const Calendar& calendar);

  std::string day(Date date) const;       ///< "2026-03-15"
  std::string dateTime(Date date) const;  ///< "2026-03-15 09:30"
  std::string time(Date date) const;      ///< "09:30"
  std::string weekday(Date date) const;   ///< "Sun"
  /// Work from `start` to `end`: "2026-03-15 09:30–17:00" on one day,
  /// "2026-03-15 22:00–2026-03-16 06:00" over midnight, and
  /// "2026-03-15 09:30–running" without an end.
  std::string span(Date start, std::optional<Date> end) const;
  /// ISO 8601 with the zone's offset: "2026-03-15T09:30:00+01:00".
  std::string timestamp(Date date) const;

  /// Signed: "+7:30", "−0:45", "+0:00".
  static std::string amount(double seconds);
  static std::string amountOfMinutes(std::int64_t minutes);
  /// Unsigned: "7:30".
  static std::string duration(double seconds);
  static std::string shortIdentifier(const UUID& id);

 private:
  Display(const Calendar& calendar, std::optional<Calendar> proleptic);
  /// A formatter is made on first use: most commands show one or two of them.
  const DateFormatter& formatter(std::optional<DateFormatter>& slot, std::string_view pattern) const;

  Calendar calendar_;
  /// Whether calendar_ is the proleptic Gregorian one (it is unless the
  /// zone could not be made so; then the given calendar stands in).
  bool proleptic_;
  mutable std::optional<DateFormatter> day_;
  mutable std::optional<DateFormatter> dateTime_;
  mutable std::optional<DateFormatter> time_;
  mutable std::optional<DateFormatter> weekday_;
  mutable std::optional<DateFormatter> timestamp_;
};

}  // namespace quillmont
