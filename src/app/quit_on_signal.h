#pragma once
// Ctrl-C in a terminal, a logout or a system shutdown ends the viewer through its normal
// shutdown, so the recorded track file is completed and the track ring flushed.

namespace orvel {

// Makes SIGINT, SIGTERM and SIGHUP quit the application's event loop. Call once, after the
// QApplication exists.
void quitOnTerminationSignals();

}  // namespace orvel
