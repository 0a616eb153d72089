#pragma once
// The options dialog: switches for map display, track recording and receiver scanning, and
// the serial ports to scan. It reads the settings when it opens and, on OK, writes them and
// applies each change at once where the program has an action for it, in a fixed order:
// scanning is switched before the port list is written, so ports ticked in the same OK are
// scanned only from the next scan on.
#include <QDialog>
#include <functional>

class QCheckBox;
class QTreeWidget;

namespace orvel {

class GpsInput;
class Settings;

// What the rest of the program does when a switch changes. Any member left empty is skipped.
struct OptionsActions {
  std::function<void()> resetRotation;               // "RotateMap" is now off: north up
  std::function<void(bool on)> setTrackRecording;    // "RecordTrack" written: start or stop both tracks
  std::function<void()> redrawMap;                   // "RotateMap" or "ShowTrack" changed
};

class OptionsDialog final : public QDialog {
 public:
  // The dialog shows and switches the scanning of `input` and writes `settings`; both must
  // outlive it.
  OptionsDialog(GpsInput& input, Settings& settings, OptionsActions actions, QWidget* parent = nullptr);

  // Writes and applies everything, then closes.
  void accept() override;

  QCheckBox* keepVisible() const { return keepVisible_; }
  QCheckBox* rotateMap() const { return rotateMap_; }
  QCheckBox* recordTrack() const { return recordTrack_; }
  QCheckBox* showTrack() const { return showTrack_; }
  QCheckBox* scanPorts() const { return scanPorts_; }
  QTreeWidget* portList() const { return ports_; }

 private:
  void fillPorts();

  GpsInput& input_;
  Settings& settings_;
  OptionsActions actions_;
  QCheckBox* keepVisible_;
  QCheckBox* rotateMap_;
  QCheckBox* recordTrack_;
  QCheckBox* showTrack_;
  QCheckBox* scanPorts_;
  QTreeWidget* ports_;
};

// Runs the dialog over `parent` through `run` (default: exec); true when it was closed with
// OK.
bool runOptionsDialog(QWidget* parent, GpsInput& input, Settings& settings, OptionsActions actions,
                      const std::function<int(QDialog& dialog)>& run = {});

}  // namespace orvel
