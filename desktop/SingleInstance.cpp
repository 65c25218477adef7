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
  if (server_.isListening()) return true;
  // Qt puts a socket with access options in place by renaming it over any
  // file of that name, a running instance's socket too: ask first whether
  // one answers. A name left by a program that died answers nobody.
  {
    QLocalSocket probe;
    probe.connectToServer(serverName());
    if (probe.waitForConnected(timeoutMilliseconds)) return false;
  }
  QLocalServer::removeServer(serverName());
  server_.setSocketOptions(QLocalServer::UserAccessOption);
  return server_.listen(serverName());
}

}  // namespace quillmont
