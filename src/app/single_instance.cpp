#include "app/single_instance.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QThread>

namespace orvel {

namespace {

constexpr int kConnectWaitMs = 250;
constexpr int kRetryMs = 50;
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

bool sendToRunningInstance(const QStringList& arguments, int waitMs) {
  QElapsedTimer waited;
  waited.start();
  QLocalSocket socket;
  for (;;) {
    socket.connectToServer(instanceSocketPath());
    if (socket.waitForConnected(kConnectWaitMs)) break;
    socket.abort();
    if (waited.elapsed() >= waitMs) return false;
    QThread::msleep(kRetryMs);
  }
  socket.write(encode(arguments));
  socket.waitForBytesWritten(kWriteWaitMs);
  socket.disconnectFromServer();
  if (socket.state() != QLocalSocket::UnconnectedState) socket.waitForDisconnected(kWriteWaitMs);
  return true;
}

InstanceServer::InstanceServer() = default;

InstanceServer::~InstanceServer() {
  if (server_) server_->close();
  if (lockFd_ >= 0) ::close(lockFd_);  // ends the lock
}

bool InstanceServer::claim() {
  const QString path = instanceSocketPath();
  lockFd_ = ::open(QFile::encodeName(path + QStringLiteral(".lock")).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (lockFd_ < 0) return true;
  if (::flock(lockFd_, LOCK_EX | LOCK_NB) != 0) {
    ::close(lockFd_);
    lockFd_ = -1;
    return false;
  }
  server_ = std::make_unique<QLocalServer>();
  server_->setSocketOptions(QLocalServer::UserAccessOption);
  // The lock is ours, so a socket file there is left over from a run that crashed.
  QLocalServer::removeServer(path);
  if (!server_->listen(path)) {
    server_.reset();
    return true;
  }
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
        deliver(arguments);
      });
    }
  });
  return true;
}

bool InstanceServer::listening() const { return server_ && server_->isListening(); }

void InstanceServer::setHandler(std::function<void(const QStringList&)> onArguments) {
  onArguments_ = std::move(onArguments);
  std::vector<QStringList> waiting;
  waiting.swap(waiting_);
  for (const QStringList& arguments : waiting) deliver(arguments);
}

void InstanceServer::deliver(const QStringList& arguments) {
  if (onArguments_) {
    onArguments_(arguments);
  } else {
    waiting_.push_back(arguments);
  }
}

}  // namespace orvel
