// The notification reaches the freedesktop service with its actions, and
// the action a person picks comes back, against a stand-in service on a
// private bus (skipped where no dbus-daemon is installed).
#include "desktop/DesktopNotifications.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QElapsedTimer>
#include <QProcess>
#include <QSignalSpy>
#include <QVariantMap>

#include <csignal>

namespace quillmont {

// What a desktop's notification service answers, as far as the program uses it.
class StandInNotifications : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

 public:
  QString summary;
  QStringList actions;
  QList<uint> closed;

 public slots:
  uint Notify(const QString&, uint, const QString&, const QString& shownSummary, const QString&,
              const QStringList& shownActions, const QVariantMap&, int) {
    summary = shownSummary;
    actions = shownActions;
    return 41;
  }
  void CloseNotification(uint id) { closed.append(id); }

 signals:
  void ActionInvoked(uint id, const QString& action);
};

namespace {

TEST(DesktopNotifications, ANoticeCarriesItsActionsAndTheChosenOneComesBack) {
  // A bus of its own, so that no desktop's real service is disturbed.
  QProcess daemon;
  daemon.start("dbus-daemon", {"--session", "--fork", "--nopidfile", "--print-address=1", "--print-pid=1"});
  if (!daemon.waitForStarted(3000) || !daemon.waitForFinished(5000) || daemon.exitCode() != 0) {
    GTEST_SKIP() << "no dbus-daemon here";
  }
  const QStringList lines = QString::fromUtf8(daemon.readAllStandardOutput()).split('\n', Qt::SkipEmptyParts);
  ASSERT_EQ(lines.size(), 2);
  const pid_t started = static_cast<pid_t>(lines[1].toInt());
  struct Ending {
    pid_t pid;
    ~Ending() { ::kill(pid, SIGTERM); }
  } ending{started};
  QDBusConnection bus = QDBusConnection::connectToBus(lines[0], "quillmont-notifications-test");
  ASSERT_TRUE(bus.isConnected());
  StandInNotifications service;
  ASSERT_TRUE(bus.registerService(DesktopNotifications::service));
  ASSERT_TRUE(bus.registerObject(DesktopNotifications::path, &service,
                                 QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals));

  DesktopNotifications notifications(bus);
  QSignalSpy chosen(&notifications, &DesktopNotifications::actionInvoked);
  EXPECT_EQ(notifications.notify("Timer running", "since 08:00", {"stop-now", "Stop now"}), 41u);
  EXPECT_EQ(service.summary, "Timer running");
  EXPECT_EQ(service.actions, QStringList({"stop-now", "Stop now"}));
  emit service.ActionInvoked(41, "stop-now");
  ASSERT_TRUE(chosen.wait(3000));
  EXPECT_EQ(chosen.at(0).at(0).toUInt(), 41u);
  EXPECT_EQ(chosen.at(0).at(1).toString(), "stop-now");
  notifications.close(41);
  QElapsedTimer waited;
  waited.start();
  while (service.closed.isEmpty() && waited.elapsed() < 3000) QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
  EXPECT_EQ(service.closed, QList<uint>({41}));
  bus.unregisterObject(DesktopNotifications::path);
  bus.unregisterService(DesktopNotifications::service);
  QDBusConnection::disconnectFromBus("quillmont-notifications-test");
}

}  // namespace
}  // namespace quillmont

#include "DesktopNotificationsTest.moc"
