#include "gps/port_scanner.h"

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "core/settings.h"
#include "gps/fix_processing.h"
#include "gps/garmin_protocol.h"
#include "gps/gps_state.h"
#include "gps/gpsd_client.h"
#include "gps/nmea_protocol.h"
#include "gps/port_reader.h"
#include "gps/serial_port.h"

namespace orvel {
namespace {

constexpr std::u16string_view kNoConnection = u"Нет соединения с GPS-приемником";

// One scan: its events and counters. Threads hold it, so a thread that outlives the wait
// of stopScanning still finds its own stop event set, whatever scan comes next.
struct ScanRun {
  ScanSignals signals;
  std::atomic<int> activeThreads{0};
  std::mutex mutex;
  std::condition_variable ended;
  int running = 0;  // threads not yet returned, under `mutex`

  void threadEnded() {
    {
      std::lock_guard lock(mutex);
      --running;
    }
    ended.notify_all();
  }
};

struct Scanner {
  std::mutex mutex;  // the configuration below and `run`
  std::shared_ptr<ScanRun> run;
  std::vector<std::thread> threads;
  std::atomic<bool> stopRequested{false};
  std::atomic<bool> scanning{false};
  SerialRoots roots;
  bool discover = true;
  std::vector<std::string> devices;
  std::optional<GpsdAddress> gpsd;
  ScanIndicator indicator;
};

// Never destroyed: a thread still running at exit must not find it gone, and a thread
// object still joinable must not end the process from a destructor.
Scanner& scanner() {
  static Scanner* const instance = new Scanner;
  return *instance;
}

ReaderHooks programHooks() {
  Scanner& s = scanner();
  ScanIndicator indicator;
  {
    std::lock_guard lock(s.mutex);
    indicator = s.indicator;
  }
  return ReaderHooks{[](std::u16string_view text) { setStatusText(text); }, indicator.connected, indicator.noConnection,
                     [] { fixLost(); }};
}

void scanPort(std::shared_ptr<ScanRun> run, SerialPortInfo info, ReaderHooks hooks) {
  SerialPort port;
  if (!port.open(info.path)) {
    if (run->activeThreads.fetch_sub(1) == 1) setStatusText(u"Не удалось открыть ни одного COM-порта.");
    run->threadEnded();
    return;
  }
  NmeaProtocol nmea;
  GarminProtocol garmin;
  const std::array<GpsProtocol*, 2> protocols{&nmea, &garmin};
  std::u16string label = u"COM";
  for (const char c : std::to_string(info.number)) label += static_cast<char16_t>(c);
  readPort(info.path, port, label, protocols, run->signals, hooks);
  run->activeThreads.fetch_sub(1);
  port.close();
  run->threadEnded();
}

void scanGpsd(std::shared_ptr<ScanRun> run, GpsdAddress address, ReaderHooks hooks) {
  readGpsd(address, run->signals, hooks);
  run->activeThreads.fetch_sub(1);
  run->threadEnded();
}

}  // namespace

void startScanning() {
  setStatusText(kNoConnection);
  if (!readSettingBool("ScanCOMPorts", true)) return;
  beginScan();
}

void beginScan() {
  stopScanning();
  Scanner& s = scanner();
  const std::vector<SerialPortInfo> ports = scanPortList();
  std::optional<GpsdAddress> gpsd;
  {
    std::lock_guard lock(s.mutex);
    gpsd = s.gpsd;
  }
  const ReaderHooks hooks = programHooks();
  auto run = std::make_shared<ScanRun>();
  s.stopRequested = false;
  const auto start = [&](auto&& body) {
    run->activeThreads.fetch_add(1);
    {
      std::lock_guard lock(run->mutex);
      ++run->running;
    }
    s.threads.emplace_back(std::forward<decltype(body)>(body));
  };
  {
    std::lock_guard lock(s.mutex);
    s.run = run;
  }
  for (const SerialPortInfo& info : ports) {
    if (info.number < 1 || info.number > kMaxComPorts) continue;
    if (readSettingInt("Enable_COM" + std::to_string(info.number), 1) == 0) continue;
    start([run, info, hooks] { scanPort(run, info, hooks); });
  }
  if (gpsd) start([run, address = *gpsd, hooks] { scanGpsd(run, address, hooks); });
  s.scanning = true;
}

void stopScanning() {
  Scanner& s = scanner();
  s.stopRequested = true;
  s.scanning = false;
  std::shared_ptr<ScanRun> run;
  {
    std::lock_guard lock(s.mutex);
    run = s.run;
  }
  bool allEnded = true;
  if (run) {
    run->signals.setStop();
    std::unique_lock lock(run->mutex);
    allEnded = run->ended.wait_for(lock, std::chrono::milliseconds(kStopWaitMs), [&] { return run->running == 0; });
  }
  // A thread that has not ended by now is left to end by itself: its run keeps its stop
  // event set.
  for (std::thread& thread : s.threads) {
    if (allEnded) {
      thread.join();
    } else {
      thread.detach();
    }
  }
  s.threads.clear();
  setStatusText(kNoConnection);
}

bool isGpsInputShutDown() { return scanner().stopRequested; }

bool isScanning() { return scanner().scanning; }

int activeScanThreads() {
  Scanner& s = scanner();
  std::lock_guard lock(s.mutex);
  return s.run ? s.run->activeThreads.load() : 0;
}

bool receiverFound() {
  Scanner& s = scanner();
  std::lock_guard lock(s.mutex);
  return s.run && !s.run->signals.stopSet() && s.run->signals.foundSet();
}

void setScanRoots(const SerialRoots& roots, bool discover) {
  Scanner& s = scanner();
  std::lock_guard lock(s.mutex);
  s.roots = roots;
  s.discover = discover;
}

void addScanDevice(const std::string& path) {
  Scanner& s = scanner();
  std::lock_guard lock(s.mutex);
  s.devices.push_back(path);
}

void setGpsdSource(const std::string& host, uint16_t port) {
  Scanner& s = scanner();
  std::lock_guard lock(s.mutex);
  s.gpsd = GpsdAddress{host, port};
}

void clearScanSources() {
  Scanner& s = scanner();
  std::lock_guard lock(s.mutex);
  s.devices.clear();
  s.gpsd.reset();
}

std::vector<SerialPortInfo> scanPortList() {
  Scanner& s = scanner();
  SerialRoots roots;
  bool discover = true;
  std::vector<std::string> devices;
  {
    std::lock_guard lock(s.mutex);
    roots = s.roots;
    discover = s.discover;
    devices = s.devices;
  }
  if (!discover) roots.dev.clear();
  return discoverSerialPorts(roots, devices);
}

bool addGpsOption(std::string_view value, std::string& error) {
  if (value.substr(0, 7) == "gpsd://") {
    GpsdAddress address;
    if (!parseGpsdUrl(value, address, error)) return false;
    setGpsdSource(address.host, address.port);
    return true;
  }
  if (value.empty()) {
    error = "--gps needs a device path or gpsd://HOST[:PORT]";
    return false;
  }
  addScanDevice(std::string(value));
  return true;
}

void setScanIndicator(ScanIndicator indicator) {
  Scanner& s = scanner();
  std::lock_guard lock(s.mutex);
  s.indicator = std::move(indicator);
}

}  // namespace orvel
