#include "app/single_instance.h"

#include <unistd.h>

#include <QDir>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>

namespace orvel {

namespace {

constexpr int kConnectWaitMs = 1000;
constexpr int kWriteWaitMs = 3000;

// The arguments as UTF-8 lines after a first "orvel" line.
QByteArray encode(const QStringList& arguments) {
  QByteArray bytes = "orvel\n";
  for (const QString& argument : arguments) bytes += argument.toUtf8() + '\n';
  return bytes;
}

QStringList decode(const QByteArray& bytes) {
  QList<QByteArray> lines = bytes.split('\n');
  if (lines.isEmpty() || lines.front() != "orvel") return {};
  lines.removeFirst();
  if (!lines.isEmpty() && lines.back().isEmpty()) lines.removeLast();
  QStringList arguments;
  for (const QByteArray& line : lines) arguments << QString::fromUtf8(line);
  return arguments;
}

}  // namespace

QString instanceSocketPath() {
  QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
  if (folder.isEmpty()) folder = QDir::tempPath() + QStringLiteral("/orvel-%1").arg(getuid());
  QDir().mkpath(folder);
  return folder + QStringLiteral("/orvel");
}

bool sendToRunningInstance(const QStringList& arguments) {
  QLocalSocket socket;
  socket.connectToServer(instanceSocketPath());
  if (!socket.waitForConnected(kConnectWaitMs)) return false;
  socket.write(encode(arguments));
  socket.waitForBytesWritten(kWriteWaitMs);
  socket.disconnectFromServer();
  if (socket.state() != QLocalSocket::UnconnectedState) socket.waitForDisconnected(kWriteWaitMs);
  return true;
}

InstanceServer::InstanceServer(std::function<void(const QStringList&)> onArguments)
    : onArguments_(std::move(onArguments)) {}

InstanceServer::~InstanceServer() {
  if (server_) server_->close();
}

bool InstanceServer::listen() {
  server_ = std::make_unique<QLocalServer>();
  server_->setSocketOptions(QLocalServer::UserAccessOption);
  const QString path = instanceSocketPath();
  // Nobody answered on the socket, so a file there is left over from a crashed run.
  QLocalServer::removeServer(path);
  if (!server_->listen(path)) return false;
  QObject::connect(server_.get(), &QLocalServer::newConnection, server_.get(), [this] {
    while (QLocalSocket* socket = server_->nextPendingConnection()) {
      auto* received = new QByteArray;
      QObject::connect(socket, &QLocalSocket::readyRead, socket,
                       [socket, received] { *received += socket->readAll(); });
      QObject::connect(socket, &QLocalSocket::disconnected, socket, [this, socket, received] {
        *received += socket->readAll();
        const QStringList arguments = decode(*received);
        delete received;
        socket->deleteLater();
        if (onArguments_) onArguments_(arguments);
      });
    }
  });
  return true;
}

}  // namespace orvel
