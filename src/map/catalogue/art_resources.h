#pragma once
// The icon and pattern files compiled into the catalogue library.
#include <QString>

namespace orvel {

// Registers the compiled-in files once; safe to call any number of times. A static library's
// resources are otherwise only there if the linker happened to keep their initialiser.
void initArtResources();

// The resource path of a file under res/, e.g. artPath("icons/1000.png").
QString artPath(const QString& underRes);

}  // namespace orvel
