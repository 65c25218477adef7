#include "app/preferences/ApplicationPreferences.h"

#include <charconv>
#include <string>

#include "core/persistence/AppConstants.h"

namespace quillmont {
namespace {

constexpr std::string_view forgottenTimerHoursKey = "forgottenTimerHours";
constexpr std::string_view lastRouteKey = "lastRoute";
constexpr std::string_view windowGeometryKey = "windowGeometry";

std::optional<int> integer(std::string_view text) {
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return value;
}

}  // namespace

std::optional<bool> ApplicationPreferences::flag(std::string_view key) const {
  const auto text = defaults_.string(key);
  if (text == "true") return true;
  if (text == "false") return false;
  return std::nullopt;
}

bool ApplicationPreferences::setFlag(std::string_view key, bool value) const {
  return defaults_.setString(value ? "true" : "false", key);
}

bool ApplicationPreferences::showsTray() const { return flag(AppConstants::showMenuBarExtraKey).value_or(true); }
bool ApplicationPreferences::setShowsTray(bool shows) const {
  return setFlag(AppConstants::showMenuBarExtraKey, shows);
}

ApplicationPreferences::TrayDisplay ApplicationPreferences::trayDisplay() const {
  const auto text = defaults_.string(AppConstants::menuBarDisplayModeKey);
  return text ? trayDisplay(*text).value_or(TrayDisplay::balance) : TrayDisplay::balance;
}
bool ApplicationPreferences::setTrayDisplay(TrayDisplay display) const {
  return defaults_.setString(rawValue(display), AppConstants::menuBarDisplayModeKey);
}

bool ApplicationPreferences::closesToTray() const {
  return flag(AppConstants::closeWindowToMenuBarKey).value_or(true);
}
bool ApplicationPreferences::setClosesToTray(bool closes) const {
  return setFlag(AppConstants::closeWindowToMenuBarKey, closes);
}

ApplicationPreferences::Appearance ApplicationPreferences::appearance() const {
  const auto text = defaults_.string(AppConstants::appearanceKey);
  return text ? appearance(*text).value_or(Appearance::system) : Appearance::system;
}
bool ApplicationPreferences::setAppearance(Appearance chosen) const {
  return defaults_.setString(rawValue(chosen), AppConstants::appearanceKey);
}

int ApplicationPreferences::forgottenTimerHours() const {
  const auto text = defaults_.string(forgottenTimerHoursKey);
  const auto hours = text ? integer(*text) : std::nullopt;
  if (!hours || *hours < 1 || *hours > maximumForgottenTimerHours) return defaultForgottenTimerHours;
  return *hours;
}
bool ApplicationPreferences::setForgottenTimerHours(int hours) const {
  if (hours < 1 || hours > maximumForgottenTimerHours) return false;
  return defaults_.setString(std::to_string(hours), forgottenTimerHoursKey);
}

AppRoute ApplicationPreferences::lastRoute() const {
  const auto text = defaults_.string(lastRouteKey);
  const auto route = text ? AppRoute::fromRawValue(*text) : std::nullopt;
  return route.value_or(AppRoute(AppRoute::overview));
}
bool ApplicationPreferences::setLastRoute(AppRoute route) const {
  return defaults_.setString(route.rawValue(), lastRouteKey);
}

std::optional<ApplicationPreferences::Geometry> ApplicationPreferences::windowGeometry() const {
  const auto text = defaults_.string(windowGeometryKey);
  if (!text) return std::nullopt;
  Geometry geometry;
  int* const parts[] = {&geometry.x, &geometry.y, &geometry.width, &geometry.height};
  std::string_view rest = *text;
  for (int* part : parts) {
    const auto comma = rest.find(',');
    const auto value = integer(rest.substr(0, comma));
    if (!value) return std::nullopt;
    *part = *value;
    rest = comma == std::string_view::npos ? std::string_view{} : rest.substr(comma + 1);
    if (comma == std::string_view::npos && part != parts[3]) return std::nullopt;
  }
  if (!rest.empty() || geometry.width <= 0 || geometry.height <= 0) return std::nullopt;
  return geometry;
}
bool ApplicationPreferences::setWindowGeometry(const Geometry& geometry) const {
  if (geometry.width <= 0 || geometry.height <= 0) return false;
  return defaults_.setString(std::to_string(geometry.x) + "," + std::to_string(geometry.y) + "," +
                                 std::to_string(geometry.width) + "," + std::to_string(geometry.height),
                             windowGeometryKey);
}

std::string_view ApplicationPreferences::rawValue(TrayDisplay display) {
  switch (display) {
    case TrayDisplay::icon: return "icon";
    case TrayDisplay::balance: return "balance";
    case TrayDisplay::balanceAndToday: return "balanceAndToday";
  }
  return "balance";
}

std::optional<ApplicationPreferences::TrayDisplay> ApplicationPreferences::trayDisplay(std::string_view raw) {
  for (const TrayDisplay display : {TrayDisplay::icon, TrayDisplay::balance, TrayDisplay::balanceAndToday}) {
    if (rawValue(display) == raw) return display;
  }
  return std::nullopt;
}

std::string_view ApplicationPreferences::rawValue(Appearance chosen) {
  switch (chosen) {
    case Appearance::system: return "system";
    case Appearance::light: return "light";
    case Appearance::dark: return "dark";
  }
  return "system";
}

std::optional<ApplicationPreferences::Appearance> ApplicationPreferences::appearance(std::string_view raw) {
  for (const Appearance chosen : {Appearance::system, Appearance::light, Appearance::dark}) {
    if (rawValue(chosen) == raw) return chosen;
  }
  return std::nullopt;
}

}  // namespace quillmont
