#include "map/catalogue/art_resources.h"

#include <QtCore/qglobal.h>

// Outside any namespace: the registration function Qt generates for the resource file is
// global.
static void initArtResourcesOnce() { Q_INIT_RESOURCE(orvel_art_files); }

namespace orvel {

void initArtResources() {
  static const bool done = (initArtResourcesOnce(), true);
  (void)done;
}

QString artPath(const QString& underRes) { return QStringLiteral(":/art/") + underRes; }

}  // namespace orvel
