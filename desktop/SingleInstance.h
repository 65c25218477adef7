// SingleInstance: one running desktop host per user and data home receives
// the links that others are asked to open, so a link raises the window that
// is already there instead of starting a second program.
#pragma once

#include <QLocalServer>
#include <QObject>
#include <QString>

namespace quillmont {

class SingleInstance final : public QObject {
  Q_OBJECT

 public:
  explicit SingleInstance(QObject* parent = nullptr);

  /// The socket name for this user and data home.
  static QString serverName();
  /// Hands `message` to the running instance; false when there is none.
  static bool sendToRunning(const QString& message);
  /// Becomes the running instance; false when another one already is.
  bool listen();
  bool isListening() const { return server_.isListening(); }

 signals:
  void messageReceived(const QString& message);

 private:
  QLocalServer server_;
};

}  // namespace quillmont
