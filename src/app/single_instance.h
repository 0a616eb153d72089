#pragma once
// One viewer per user. The first start takes a lock file in the user's runtime folder and,
// in the same step, listens on a local socket named "orvel" beside it; a later start finds
// the lock taken, hands its command line to the holder and ends. The lock is taken before
// anything else happens, so two starts at the same moment still make one viewer.
#include <functional>
#include <memory>
#include <vector>

#include <QString>
#include <QStringList>

class QLocalServer;

namespace orvel {

// The socket's full path; the lock file is this path with ".lock" added.
QString instanceSocketPath();

// Hands `arguments` to a running instance, waiting up to `waitMs` for it to listen (it may
// have taken the lock a moment ago). True if one took them.
bool sendToRunningInstance(const QStringList& arguments, int waitMs = 5000);

class InstanceServer {
 public:
  InstanceServer();
  ~InstanceServer();
  InstanceServer(const InstanceServer&) = delete;
  InstanceServer& operator=(const InstanceServer&) = delete;

  // Takes the lock and listens. False when another viewer holds the lock. Where no lock can
  // be made (no writable runtime folder) this start counts as the only one.
  bool claim();
  bool listening() const;
  // Where the arguments of later starts go (on the GUI thread); those that came before a
  // handler was set are handed to it now.
  void setHandler(std::function<void(const QStringList&)> onArguments);

 private:
  void deliver(const QStringList& arguments);

  int lockFd_ = -1;
  std::unique_ptr<QLocalServer> server_;
  std::function<void(const QStringList&)> onArguments_;
  std::vector<QStringList> waiting_;
};

}  // namespace orvel
