// DesktopNotifications: the desktop's notifications through the
// freedesktop notification service on the session bus, with actions. A
// desktop without the service (or without a session bus) shows nothing and
// notify() answers 0. `actionInvoked` reports the action a person chose on
// one of this program's notifications.
#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QStringList>

namespace quillmont {

class DesktopNotifications final : public QObject {
  Q_OBJECT

 public:
  static constexpr const char* service = "org.freedesktop.Notifications";
  static constexpr const char* path = "/org/freedesktop/Notifications";

  /// Notifications on the session bus, or on `bus` (tests).
  explicit DesktopNotifications(QObject* parent = nullptr);
  explicit DesktopNotifications(QDBusConnection bus, QObject* parent = nullptr);

  /// Shows a notification; `actions` alternate key and label. Its id, or 0
  /// when the desktop could not show it.
  unsigned notify(const QString& summary, const QString& body, const QStringList& actions = {});
  /// Withdraws a notification shown by notify().
  void close(unsigned id);

 signals:
  void actionInvoked(unsigned id, const QString& action);

 private slots:
  void onActionInvoked(uint id, const QString& action);

 private:
  QDBusConnection bus_;
};

}  // namespace quillmont
