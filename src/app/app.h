#pragma once
// The viewer's start-up and shutdown.
#include <functional>

#include <QStringList>

namespace orvel {

class MainWindow;
class Session;

inline constexpr int kExitNormal = 0;
inline constexpr int kExitNoWindow = 1;
inline constexpr int kExitAnotherInstance = -1;
inline constexpr int kExitBadCommandLine = 2;

struct CommandLine {
  QString mapPath;         // the map to open, absolute; empty for none
  bool demo = false;       // --demo: the bundled demo map and, with no receiver, its replayed drive
  QStringList gpsSources;  // --gps DEVICE or --gps gpsd://HOST[:PORT], in the order given
  QString error;           // a one-line reason when the command line cannot be used
};

CommandLine parseCommandLine(const QStringList& arguments);

// Called once the viewer has started and its event loop runs (tests drive it from there).
using RunningHook = std::function<void(Session& session, MainWindow& window)>;

// Runs the viewer inside an existing QApplication; `arguments` exclude the program name.
// Returns 0 after a normal run, 1 if the window could not be made, -1 if another instance
// was running (it got the command line).
int appMain(const QStringList& arguments, const RunningHook& onRunning = {});

// Appends a line to the file named by ORVEL_TEST_LOG, if set (start-up facts for tests).
void testLog(const QString& line);

}  // namespace orvel
