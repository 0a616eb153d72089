#pragma once
// What every page is made with: the window that shows it, the user's settings, the message
// box, the shared drawing objects, the map styles and the receiver's state. The owner of the pages hands them in; a test builds its own.
namespace orvel {

class GpsState;
class MapStyles;
class Messages;
class PageHost;
class Settings;
struct DrawingObjects;

struct PageContext {
  PageHost& host;
  Settings& settings;
  Messages& messages;
  const DrawingObjects& drawing;
  const MapStyles& styles;
  const GpsState& gps;
};

}  // namespace orvel
