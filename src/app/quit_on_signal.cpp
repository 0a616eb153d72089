#include "app/quit_on_signal.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace orvel {
namespace {

int signalSocket[2] = {-1, -1};

// Only async-signal-safe work here: one byte into the socket wakes the event loop.
void onSignal(int) {
  const char byte = 1;
  [[maybe_unused]] const ssize_t written = ::write(signalSocket[0], &byte, 1);
}

}  // namespace

void quitOnTerminationSignals() {
  if (signalSocket[0] >= 0) return;
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, signalSocket) != 0) return;
  auto* notifier = new QSocketNotifier(signalSocket[1], QSocketNotifier::Read, QCoreApplication::instance());
  QObject::connect(notifier, &QSocketNotifier::activated, [] {
    char byte = 0;
    [[maybe_unused]] const ssize_t got = ::read(signalSocket[1], &byte, 1);
    QCoreApplication::quit();
  });
  struct sigaction action {};
  action.sa_handler = onSignal;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART;
  for (int signal : {SIGINT, SIGTERM, SIGHUP}) ::sigaction(signal, &action, nullptr);
}

}  // namespace orvel
