#include "desktop/WindowPlacement.h"

#include <QRegularExpression>
#include <QStringList>

#include "platform/foundation/UserDefaults.h"

namespace quillmont {
namespace {

std::string keyFor(const QString& instance) { return "window." + instance.toStdString(); }

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

bool WindowPlacement::isValidInstance(const QString& instance) {
  static const QRegularExpression allowed("^[A-Za-z0-9_-]{1,64}$");
  return allowed.match(instance).hasMatch();
}

}  // namespace quillmont
