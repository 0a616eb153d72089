#pragma once
// The program's icon, drawn in code: a folded map sheet with a position pin.
#include <QImage>

namespace orvel {

QImage programIcon(int size);

}  // namespace orvel
