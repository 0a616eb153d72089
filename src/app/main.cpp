// orvel: the moving-map viewer.
#include <QApplication>

#include "app/app.h"

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QApplication::setApplicationName(QStringLiteral("orvel"));
  QStringList arguments = QApplication::arguments();
  arguments.removeFirst();
  return orvel::appMain(arguments);
}
