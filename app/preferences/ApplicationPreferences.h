// ApplicationPreferences: the Quillmont application's own choices, kept in
// the program's standard preferences (not the group's suite the widget
// reads): whether the tray item shows and what it shows, whether closing the
// window keeps the tray running, the light or dark appearance, when a timer
// counts as forgotten, and the window's last page and size. Each is stored
// as text under its key; a missing or unreadable value reads as the default,
// and a write that cannot be made answers false and keeps the old value.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "core/persistence/AppRoute.h"
#include "platform/foundation/UserDefaults.h"

namespace quillmont {

class ApplicationPreferences {
 public:
  /// What the tray item shows beside its icon.
  enum class TrayDisplay { icon, balance, balanceAndToday };
  /// The application's colours: the desktop's, or always light or dark.
  enum class Appearance { system, light, dark };

  /// Where a window remembers its place: x, y, width, height in pixels.
  struct Geometry {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    friend bool operator==(const Geometry&, const Geometry&) = default;
  };

  static constexpr int defaultForgottenTimerHours = 10;
  static constexpr int maximumForgottenTimerHours = 48;

  /// The running program's standard preferences.
  ApplicationPreferences() : defaults_(UserDefaults::standard()) {}
  /// Preferences kept in `defaults` (tests).
  explicit ApplicationPreferences(UserDefaults defaults) : defaults_(std::move(defaults)) {}

  bool showsTray() const;
  bool setShowsTray(bool shows) const;
  TrayDisplay trayDisplay() const;
  bool setTrayDisplay(TrayDisplay display) const;
  bool closesToTray() const;
  bool setClosesToTray(bool closes) const;
  Appearance appearance() const;
  bool setAppearance(Appearance appearance) const;
  /// After how many hours a running timer counts as forgotten (1 to 48).
  int forgottenTimerHours() const;
  bool setForgottenTimerHours(int hours) const;
  /// The page the window showed last; the overview when none was kept.
  AppRoute lastRoute() const;
  bool setLastRoute(AppRoute route) const;
  std::optional<Geometry> windowGeometry() const;
  bool setWindowGeometry(const Geometry& geometry) const;

  static std::string_view rawValue(TrayDisplay display);
  static std::optional<TrayDisplay> trayDisplay(std::string_view rawValue);
  static std::string_view rawValue(Appearance appearance);
  static std::optional<Appearance> appearance(std::string_view rawValue);

 private:
  std::optional<bool> flag(std::string_view key) const;
  bool setFlag(std::string_view key, bool value) const;

  UserDefaults defaults_;
};

}  // namespace quillmont
