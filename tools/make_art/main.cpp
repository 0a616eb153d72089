// orvel-make-art RESDIR: draws the point icons and fill patterns and writes them as the PNG
// files under RESDIR that the catalogue is built with. Run it after changing any drawing.
#include <cstdio>

#include <QGuiApplication>

#include "make_art/write_art.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: orvel-make-art RESDIR\n");
    return 2;
  }
  // Drawing needs no screen.
  if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QGuiApplication app(argc, argv);
  const QString error = orvel::art::writeArt(QString::fromLocal8Bit(argv[1]));
  if (!error.isEmpty()) {
    std::fprintf(stderr, "orvel-make-art: %s\n", qPrintable(error));
    return 1;
  }
  return 0;
}
