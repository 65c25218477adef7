#include "core/persistence/AppRoute.h"

#include "core/persistence/AppConstants.h"
#include "platform/foundation/Text.h"
#include "platform/foundation/URL.h"

namespace quillmont {
namespace {

struct RouteInfo {
  std::string_view rawValue;
  std::string_view title;
  std::string_view systemImage;
};

constexpr std::array<RouteInfo, 4> routes{{
    {"overview", "Time bank", "plus.forwardslash.minus"},
    {"history", "Activity", "list.bullet.rectangle"},
    {"reports", "Calendar", "calendar"},
    {"settings", "Settings", "slider.horizontal.3"},
}};

}  // namespace

std::optional<AppRoute> AppRoute::fromRawValue(std::string_view rawValue) {
  for (const AppRoute route : allCases()) {
    if (route.rawValue() == rawValue) return route;
  }
  return std::nullopt;
}

std::optional<AppRoute> AppRoute::fromURL(std::string_view text) {
  const auto url = URL::parse(text);
  if (!url || !url->scheme || Text::lowercased(*url->scheme) != AppConstants::deepLinkScheme) return std::nullopt;
  if (!url->host) return std::nullopt;
  return fromRawValue(Text::lowercased(*url->host));
}

std::string_view AppRoute::rawValue() const { return routes[value_].rawValue; }
std::string_view AppRoute::title() const { return routes[value_].title; }
std::string_view AppRoute::systemImage() const { return routes[value_].systemImage; }

std::string AppRoute::url() const { return std::string(AppConstants::deepLinkScheme) + "://" + std::string(rawValue()); }

}  // namespace quillmont
