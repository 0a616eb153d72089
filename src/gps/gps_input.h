#pragma once
// GPS input: finding the receiver and reading it. One reading thread per enabled serial port
// (and one for a gpsd the user named) tries the protocols in turn; the first thread to
// recognise data wins and the others end. GpsInput owns these threads and the demo replay's,
// and joins every one of them when scanning stops and when it is destroyed.
//
// Everything the threads learn goes to the GpsSink given at construction (fix processing in
// the program); the settings decide whether and where to scan. Call the members from one
// thread (the user-interface thread); the queries marked so may be asked from any thread.
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "core/settings.h"
#include "gps/demo_replay.h"
#include "gps/gps_sink.h"
#include "gps/gpsd_client.h"
#include "gps/host_lookup.h"
#include "gps/port_reader.h"
#include "gps/scan_signals.h"
#include "gps/serial_ports.h"

namespace orvel {

// A stop that takes longer than this is a fault of some reading thread: none of them waits
// longer than a few polls for anything.
inline constexpr uint32_t kStopWaitMs = 2000;

class GpsInput {
 public:
  // `sink` and `settings` must outlive the object.
  GpsInput(GpsSink& sink, Settings& settings);
  // Stops the demo replay and the scan, joining their threads.
  ~GpsInput();
  GpsInput(const GpsInput&) = delete;
  GpsInput& operator=(const GpsInput&) = delete;

  // Sets the status "Нет соединения с GPS-приемником" and, unless the setting "ScanCOMPorts"
  // is 0, begins a scan.
  void startScanning();
  // Stops any scan, then starts a thread for every port n of scanPortList() whose setting
  // "Enable_COM%d" is not 0, and one for the gpsd source if there is one.
  void beginScan();
  // Asks every thread to end and joins them all, then sets the status "Нет соединения с
  // GPS-приемником". True when they had all ended within kStopWaitMs.
  bool stopScanning();

  // GPS input is shut down: scanning was stopped (the position marker is not drawn then).
  // Any thread.
  bool isGpsInputShutDown() const { return stopRequested_; }
  // A scan was begun and not stopped (some of its threads may have ended since). Any thread.
  bool isScanning() const { return scanning_; }
  // Reading threads of the current scan that have not ended. Any thread.
  int activeScanThreads() const { return activeThreads_; }
  // A thread of the current scan has the receiver. Any thread.
  bool receiverFound() const;

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
  // The ports a scan would use now, each with the COM number (1..19) its device keeps in the
  // settings (a device seen for the first time is given one and remembered).
  std::vector<SerialPortInfo> scanPortList() const;

  // The value of `orvel --gps VALUE`: "gpsd://HOST[:PORT]" (default 127.0.0.1:2947) or a
  // device path. Adds it as above; false with a one-line reason for a malformed value.
  bool addGpsOption(std::string_view value, std::string& error);

  // The reception indicator the reading threads drive. Install before scanning.
  void setScanIndicator(ScanIndicator indicator);

  // The demo replay, which ends by itself when a thread of this object finds a receiver.
  DemoReplay& demoReplay() { return demo_; }

 private:
  void scanPort(const SerialPortInfo& info, const ScanIndicator& indicator);
  void scanGpsd(const GpsdAddress& address, const ScanIndicator& indicator);
  void threadEnded();

  GpsSink& sink_;
  Settings& settings_;

  // Configuration, used by the controlling thread only.
  SerialRoots roots_;
  bool discover_ = true;
  std::vector<std::string> devices_;
  std::optional<GpsdAddress> gpsd_;
  ScanIndicator indicator_;

  // Outlives every thread of every scan: a lookup the gpsd thread gave up may still run.
  HostLookups lookups_;

  // The current scan.
  ScanSignals signals_;
  std::atomic<bool> stopRequested_{false};
  std::atomic<bool> scanning_{false};
  std::atomic<int> activeThreads_{0};
  std::mutex endMutex_;
  std::condition_variable ended_;
  int running_ = 0;  // threads not yet returned, under endMutex_
  std::vector<std::thread> threads_;

  // Last, so that it goes first: its thread asks receiverFound().
  DemoReplay demo_;
};

}  // namespace orvel
