#pragma once
// Finding the receiver: one reading thread per enabled serial port (and one for a gpsd the
// user named), the protocols tried in turn on each, the first thread to recognise data wins
// and the others end. Call these from the user-interface thread.
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "gps/serial_ports.h"

namespace orvel {

inline constexpr uint32_t kStopWaitMs = 2000;  // stopScanning waits at most this long

// Sets the status "Нет соединения с GPS-приемником" and, unless the setting "ScanCOMPorts"
// is 0, begins a scan.
void startScanning();
// Stops any scan, then starts a thread for every port n of scanPortList() whose setting
// "Enable_COM%d" is not 0, and one for the gpsd source if there is one.
void beginScan();
// Asks every thread to end and waits for them, at most kStopWaitMs; threads still running
// then are left to end by themselves. Sets the status "Нет соединения с GPS-приемником".
void stopScanning();

// GPS input is shut down: scanning was stopped (the position marker is not drawn then).
bool isGpsInputShutDown();
// A scan was begun and not stopped (some of its threads may have ended since).
bool isScanning();
// Reading threads of the current scan that have not ended.
int activeScanThreads();
// A thread of the current scan has the receiver.
bool receiverFound();

// Ports: what discovery finds below `roots`, unless `discover` is false, then the devices
// added below. Tests use a made-up tree or pseudo-terminals only.
void setScanRoots(const SerialRoots& roots, bool discover = true);
// Adds a device path to the ports scanned (a USB receiver, a Bluetooth rfcomm device, a
// pseudo-terminal). It takes effect at the next beginScan.
void addScanDevice(const std::string& path);
// Reads fixes from the gpsd at host:port as well, from the next beginScan on.
void setGpsdSource(const std::string& host, uint16_t port);
// Forgets the added devices and the gpsd source.
void clearScanSources();
// The ports a scan would use now, numbered COM1..COM19.
std::vector<SerialPortInfo> scanPortList();

// The value of `orvel --gps VALUE`: "gpsd://HOST[:PORT]" (default 127.0.0.1:2947) or a device
// path. Adds it as above; false with a one-line reason for a malformed value.
bool addGpsOption(std::string_view value, std::string& error);

// The reception indicator the scanner drives (the status icon). Install before scanning.
struct ScanIndicator {
  std::function<void()> connected;     // a receiver was found, no satellites known yet
  std::function<void()> noConnection;  // the receiver was lost
};
void setScanIndicator(ScanIndicator indicator);

}  // namespace orvel
