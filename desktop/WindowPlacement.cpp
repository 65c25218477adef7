#include "desktop/WindowPlacement.h"

#include <QRegularExpression>
#include <QStringList>
#include <filesystem>
#include <system_error>

#include "desktop/WidgetLayout.h"
#include "platform/foundation/UserDefaults.h"

namespace quillmont {
namespace {

constexpr std::string_view keyPrefix = "window.";

std::string keyFor(const QString& instance) { return std::string(keyPrefix) + instance.toStdString(); }

}  // namespace

std::optional<WindowPlacement> WindowPlacement::load(const QString& instance) {
  const auto stored = UserDefaults::standard().string(keyFor(instance));
  if (!stored) return std::nullopt;
  // "x y family"
  const QStringList parts = QString::fromStdString(*stored).split(' ');
  if (parts.size() != 3) return std::nullopt;
  bool xRead = false;
  bool yRead = false;
  const int x = parts[0].toInt(&xRead);
  const int y = parts[1].toInt(&yRead);
  const auto family = widgetFamilyNamed(parts[2].toStdString());
  if (!xRead || !yRead || !family) return std::nullopt;
  return WindowPlacement{QPoint(x, y), *family};
}

bool WindowPlacement::save(const QString& instance) const {
  const std::string text =
      std::to_string(position.x()) + ' ' + std::to_string(position.y()) + ' ' + std::string(name(family));
  return UserDefaults::standard().setString(text, keyFor(instance));
}

std::map<QString, WindowPlacement> WindowPlacement::all() {
  // Instance names are plain (letters, digits, '-', '_'), so each key's
  // file carries the key as its name.
  std::map<QString, WindowPlacement> placements;
  std::error_code error;
  for (const auto& file : std::filesystem::directory_iterator(UserDefaults::standard().folder(), error)) {
    const std::string name = file.path().filename().string();
    if (!name.starts_with(keyPrefix)) continue;
    const QString instance = QString::fromStdString(name.substr(keyPrefix.size()));
    if (!isValidInstance(instance)) continue;
    if (const auto placement = load(instance)) placements.emplace(instance, *placement);
  }
  return placements;
}

QRect WindowPlacement::frame() const { return QRect(position, WidgetLayout::sizeOf(family).toSize()); }

QPoint WindowPlacement::firstFreeSlot(const QRect& area, QSize size, const std::vector<QRect>& taken) {
  const QPoint first(area.right() + 1 - gap - size.width(), area.top() + gap);
  const auto isFree = [&](const QRect& slot) {
    const QRect kept = slot.adjusted(-gap + 1, -gap + 1, gap - 1, gap - 1);
    for (const QRect& other : taken) {
      if (kept.intersects(other)) return false;
    }
    return true;
  };
  for (int x = first.x(); x >= area.left() + gap; x -= size.width() + gap) {
    for (int y = first.y(); y + size.height() <= area.bottom() + 1; y += size.height() + gap) {
      const QRect slot(QPoint(x, y), size);
      if (isFree(slot)) return slot.topLeft();
    }
  }
  return first;
}

QPoint WindowPlacement::placeNew(const QString& instance, QSize size, const QRect& area) {
  std::vector<QRect> taken;
  for (const auto& [name, placement] : all()) {
    if (name != instance && placement.frame().intersects(area)) taken.push_back(placement.frame());
  }
  return firstFreeSlot(area, size, taken);
}

bool WindowPlacement::isValidInstance(const QString& instance) {
  static const QRegularExpression allowed("^[A-Za-z0-9_-]{1,64}$");
  return allowed.match(instance).hasMatch();
}

}  // namespace quillmont
