#include "desktop/SingleInstance.h"

#include <QCryptographicHash>
#include <QLocalSocket>
#include <unistd.h>

#include "platform/foundation/ContainerDirectories.h"

namespace quillmont {
namespace {

constexpr int timeoutMilliseconds = 1000;

}  // namespace

SingleInstance::SingleInstance(QObject* parent) : QObject(parent) {
  connect(&server_, &QLocalServer::newConnection, this, [this] {
    while (QLocalSocket* socket = server_.nextPendingConnection()) {
      connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
      connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
        while (socket->canReadLine()) emit messageReceived(QString::fromUtf8(socket->readLine()).trimmed());
      });
    }
  });
}

QString SingleInstance::serverName() {
  const QByteArray home = QByteArray::fromStdString(ContainerDirectories::dataHome().string());
  return QString("quillmont-widget-%1-%2")
      .arg(::getuid())
      .arg(QString::fromLatin1(QCryptographicHash::hash(home, QCryptographicHash::Sha256).toHex().left(16)));
}

bool SingleInstance::sendToRunning(const QString& message) {
  QLocalSocket socket;
  socket.connectToServer(serverName());
  if (!socket.waitForConnected(timeoutMilliseconds)) return false;
  socket.write(message.toUtf8() + '\n');
  socket.flush();
  const bool written = socket.waitForBytesWritten(timeoutMilliseconds) || socket.bytesToWrite() == 0;
  socket.disconnectFromServer();
  return written;
}

bool SingleInstance::listen() {
  server_.setSocketOptions(QLocalServer::UserAccessOption);
  if (server_.listen(serverName())) return true;
  // A name left by a program that died: nobody answers on it.
  if (server_.serverError() == QAbstractSocket::AddressInUseError) {
    QLocalSocket probe;
    probe.connectToServer(serverName());
    if (probe.waitForConnected(timeoutMilliseconds)) return false;
    QLocalServer::removeServer(serverName());
    return server_.listen(serverName());
  }
  return false;
}

}  // namespace quillmont
