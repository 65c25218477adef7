// ReportGranularity: the period a report covers, the calendar week or the
// calendar month containing a chosen date. Its raw values are "week" and
// "month"; any other text is no granularity.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace quillmont {

class ReportGranularity {
 public:
  enum Case : std::uint8_t { week, month };

  constexpr ReportGranularity(Case value) : value_(value) {}  // NOLINT: a granularity is its case

  static constexpr std::optional<ReportGranularity> fromRawValue(std::string_view rawValue) {
    if (rawValue == "week") return week;
    if (rawValue == "month") return month;
    return std::nullopt;
  }
  static constexpr std::array<ReportGranularity, 2> allCases() { return {week, month}; }

  constexpr Case value() const { return value_; }
  constexpr std::string_view rawValue() const { return value_ == week ? "week" : "month"; }

  friend constexpr bool operator==(ReportGranularity, ReportGranularity) = default;

 private:
  Case value_;
};

}  // namespace quillmont
