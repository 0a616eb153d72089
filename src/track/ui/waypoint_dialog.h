#pragma once
// The waypoint dialog: latitude, longitude, name, altitude and comment of one waypoint,
// edited before the store saves it. Each edit field's object name is its control id
// (1001 latitude, 1002 longitude, 1003 name, 1004 altitude, 1005 comment); the dialog's is
// "109". A text that cannot be read leaves the waypoint's previous value in place.
#include <functional>
#include <string>

#include <QDialog>

#include "track/waypoint_file.h"

class QLineEdit;

namespace orvel {

class Messages;

inline constexpr int kWaypointLatitudeId = 1001;
inline constexpr int kWaypointLongitudeId = 1002;
inline constexpr int kWaypointNameId = 1003;
inline constexpr int kWaypointAltitudeId = 1004;
inline constexpr int kWaypointCommentId = 1005;
// Buttons of the dialog without a feature behind them yet.
inline constexpr int kWaypointSymbolCommand = 3;
inline constexpr int kWaypointShowCommand = 4;
// Longest text each field takes, in UTF-16 code units.
inline constexpr int kWaypointFieldLength = 127;

// The unit lengths are shown in: 1 metres (the start value), 0 feet.
inline constexpr int kUnitFeet = 0;
inline constexpr int kUnitMetres = 1;
inline constexpr float kFeetPerMetre = 3.2808399f;

// How lengths are written for the user: the program keeps one and hands it to the dialogs
// that show an altitude.
class LengthFormat {
 public:
  int altitudeUnit() const { return unit_; }
  void setAltitudeUnit(int unit) { unit_ = unit; }

  // The number text of a length in the altitude unit: with one decimal ("152.4"), or whole.
  // `givenInMetres` says what unit `value` is in; it is converted when that differs.
  std::u16string formatLength(float value, bool givenInMetres, bool whole) const;

 private:
  int unit_ = kUnitMetres;
};

class WaypointEditDialog final : public QDialog {
 public:
  // Shows the altitude as `lengths` writes it; its unfinished commands tell `messages`.
  WaypointEditDialog(Waypoint& waypoint, const LengthFormat& lengths, Messages& messages, QWidget* parent = nullptr);

  // Writes the fields back into the waypoint, then closes.
  void accept() override;

  QLineEdit* field(int controlId) const;

 private:
  Waypoint& waypoint_;
};

// Runs the dialog over `owner` through `run` (default: exec); true when it was closed with
// OK and the waypoint took the fields.
using DialogRun = std::function<int(QDialog& dialog)>;
bool editWaypoint(Waypoint& waypoint, const LengthFormat& lengths, Messages& messages, QWidget* owner,
                  const DialogRun& run = {});

}  // namespace orvel
