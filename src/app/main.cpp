// orvel: the moving-map viewer.
#include <QApplication>

#include "app/app.h"
#include "app/quit_on_signal.h"

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QApplication::setApplicationName(QStringLiteral("orvel"));
  orvel::quitOnTerminationSignals();
  QStringList arguments = QApplication::arguments();
  arguments.removeFirst();
  return orvel::appMain(arguments);
}
