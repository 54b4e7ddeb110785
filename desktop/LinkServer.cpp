#include "desktop/LinkServer.h"

#include <QDir>
#include <QLocalSocket>
#include <QStandardPaths>

namespace tellurix {

namespace {

constexpr int Patience = 2000;  // milliseconds; a busy instance takes the command later
constexpr qint64 LongestCommand = 65536;

QString UsualPath() {
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
  return QDir(folder.isEmpty() ? QDir::tempPath() : folder).filePath(LinkServer::Topic);
}

}  // namespace

bool LinkServer::Send(const QString& command, const QString& path) {
  QLocalSocket socket;
  socket.connectToServer(path.isEmpty() ? UsualPath() : path);
  if (!socket.waitForConnected(Patience)) return false;
  socket.write(command.toUtf8() + '\n');
  // The system holds what a busy instance has not read yet.
  while (socket.bytesToWrite() > 0) {
    if (!socket.waitForBytesWritten(Patience)) return false;
  }
  socket.disconnectFromServer();
  return true;
}

bool LinkServer::Listen(std::function<void(const QString&)> execute, const QString& path) {
  execute_ = std::move(execute);
  server_.setSocketOptions(QLocalServer::UserAccessOption);
  const QString name = path.isEmpty() ? UsualPath() : path;
  // Nobody answered there: what is left is of an instance that was killed.
  QLocalServer::removeServer(name);
  if (!server_.listen(name)) return false;
  connect(&server_, &QLocalServer::newConnection, this, [this] {
    while (QLocalSocket* socket = server_.nextPendingConnection()) {
      connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
      const auto read = [this, socket] {
        if (socket->bytesAvailable() > LongestCommand) return socket->abort();
        while (socket->canReadLine()) execute_(QString::fromUtf8(socket->readLine()).trimmed());
      };
      connect(socket, &QLocalSocket::readyRead, this, read);
      read();
    }
  });
  return true;
}

}  // namespace tellurix
