// WidgetSnapshot: the seven figures the widget draws itself from, written by
// whoever changes the time bank and read by the widget, which never opens
// the record store. Stored as a compact JSON document (see encodedJSON);
// instants are seconds since 2001-01-01 00:00:00 UTC.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/foundation/Calendar.h"
#include "platform/foundation/Date.h"

namespace quillmont {

struct WidgetSnapshot {
  double balanceSeconds = 0;
  /// Today's credits, not negative.
  double todayWorkedSeconds = 0;
  /// Today's debits, not negative.
  double todayExpectedSeconds = 0;
  std::optional<Date> runningSince;
  /// Always four supported amounts (QuickActionConfiguration::normalized).
  std::array<std::int64_t, 4> quickActionMinutes{};
  Date updatedAt;
  bool isConfigured = false;

  /// Stores the fields as given, except the quick actions, which are normalised.
  WidgetSnapshot(double balanceSeconds, double todayWorkedSeconds, double todayExpectedSeconds,
                 std::optional<Date> runningSince, std::span<const std::int64_t> quickActionMinutes, Date updatedAt,
                 bool isConfigured);

  /// The sample the widget gallery shows: +4:30, +1:30 and −0:30 today.
  static const WidgetSnapshot& placeholder();
  /// What a reader gets when nothing usable is stored: not configured, zero.
  static const WidgetSnapshot& empty();

  /// This snapshot as shown at `date`: when it was computed on an earlier (or
  /// other) day of `calendar`, today's figures are zero; all else stays.
  WidgetSnapshot displayed(Date at, const Calendar& calendar) const;

  /// The compact document, keys in field order, "runningSince" only when
  /// there is one. Throws JsonEncodingError for a non-finite number.
  std::string encodedJSON() const;
  /// The document read back: "runningSince" may be missing or null;
  /// "quickActionMinutes" missing or null means 15, 30, 60, 120;
  /// "isConfigured" missing or null means true. Anything else that is
  /// missing or of the wrong type fails the whole document
  /// (JsonDecodingError); there is no partial result.
  static WidgetSnapshot decoded(std::string_view json);

  friend bool operator==(const WidgetSnapshot&, const WidgetSnapshot&) = default;
};

}  // namespace quillmont
