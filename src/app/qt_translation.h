#pragma once
// Qt's own texts in Russian, like every text of the program: standard buttons ("Отмена"),
// the open-file dialog, context menus of edit fields.
class QTranslator;

namespace orvel {

// Loads Qt's Russian catalogue into `translator` and installs it in the running
// application; false (and Qt stays English) when the catalogue is not installed.
bool installQtTranslation(QTranslator& translator);

}  // namespace orvel
