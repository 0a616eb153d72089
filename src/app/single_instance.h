#pragma once
// One viewer per user: the first start listens on a local socket named "orvel" in the
// user's runtime folder; a later start hands it its command line and ends.
#include <functional>
#include <memory>

#include <QString>
#include <QStringList>

class QLocalServer;

namespace orvel {

// The socket's full path.
QString instanceSocketPath();

// Hands `arguments` to a running instance. True if one was there and took them.
bool sendToRunningInstance(const QStringList& arguments);

// Listens for later starts; each one's arguments go to `onArguments` (on the GUI thread).
class InstanceServer {
 public:
  explicit InstanceServer(std::function<void(const QStringList&)> onArguments);
  ~InstanceServer();
  bool listen();

 private:
  std::function<void(const QStringList&)> onArguments_;
  std::unique_ptr<QLocalServer> server_;
};

}  // namespace orvel
