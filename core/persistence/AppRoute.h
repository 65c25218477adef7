// AppRoute: the application's four top-level screens, with their titles,
// symbols and deep links ("quillmont://<route>"), and the parser that turns
// an incoming link back into a route (scheme and host compared in lower case;
// path, query and fragment ignored).
#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quillmont {

class AppRoute {
 public:
  enum Case : std::uint8_t { overview, history, reports, settings };

  constexpr AppRoute(Case value) : value_(value) {}  // NOLINT: a route is its case

  static constexpr std::array<AppRoute, 4> allCases() { return {overview, history, reports, settings}; }
  /// Exact, case-sensitive match of a raw value.
  static std::optional<AppRoute> fromRawValue(std::string_view rawValue);
  /// The route of a deep link, or nothing.
  static std::optional<AppRoute> fromURL(std::string_view url);

  constexpr Case value() const { return value_; }
  std::string_view rawValue() const;
  std::string_view id() const { return rawValue(); }
  std::string_view title() const;
  std::string_view systemImage() const;
  /// "quillmont://" followed by the raw value.
  std::string url() const;

  friend constexpr bool operator==(AppRoute, AppRoute) = default;

 private:
  Case value_;
};

}  // namespace quillmont
