#include "desktop/DesktopNotifications.h"

#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusReply>
#include <QVariantMap>

namespace quillmont {

DesktopNotifications::DesktopNotifications(QObject* parent)
    : DesktopNotifications(QDBusConnection::sessionBus(), parent) {}

DesktopNotifications::DesktopNotifications(QDBusConnection bus, QObject* parent)
    : QObject(parent), bus_(std::move(bus)) {
  bus_.connect(service, path, service, "ActionInvoked", this,
                                        SLOT(onActionInvoked(uint, QString)));
}

unsigned DesktopNotifications::notify(const QString& summary, const QString& body, const QStringList& actions) {
  if (!bus_.isConnected()) return 0;
  QDBusInterface notifications(service, path, service, bus_);
  if (!notifications.isValid()) return 0;
  QVariantMap hints;
  hints.insert("desktop-entry", "quillmont");
  hints.insert("urgency", QVariant::fromValue<uchar>(1));
  const QDBusReply<uint> reply = notifications.call("Notify", QString("Quillmont"), 0u, QString("quillmont"), summary,
                                                    body, actions, hints, -1);
  return reply.isValid() ? reply.value() : 0;
}

void DesktopNotifications::close(unsigned id) {
  if (id == 0 || !bus_.isConnected()) return;
  QDBusInterface notifications(service, path, service, bus_);
  if (notifications.isValid()) notifications.call(QDBus::NoBlock, "CloseNotification", id);
}

void DesktopNotifications::onActionInvoked(uint id, const QString& action) { emit actionInvoked(id, action); }

}  // namespace quillmont
