#include "gps/gps_input.h"

#include <array>
#include <chrono>

#include "gps/garmin_protocol.h"
#include "gps/nmea_protocol.h"
#include "gps/port_numbers.h"
#include "gps/serial_port.h"

namespace orvel {
namespace {

constexpr std::u16string_view kNoConnection = u"Нет соединения с GPS-приемником";

}  // namespace

GpsInput::GpsInput(GpsSink& sink, Settings& settings)
    : sink_(sink), settings_(settings), demo_(sink, [this] { return receiverFound(); }) {}

GpsInput::~GpsInput() {
  demo_.stopDemoReplay();
  stopScanning();
}

void GpsInput::threadEnded() {
  {
    std::lock_guard lock(endMutex_);
    --running_;
  }
  ended_.notify_all();
}

void GpsInput::scanPort(const SerialPortInfo& info, const ScanIndicator& indicator) {
  SerialPort port;
  if (!port.open(info.path)) {
    if (activeThreads_.fetch_sub(1) == 1) sink_.setStatusText(u"Не удалось открыть ни одного COM-порта.");
    return;
  }
  NmeaProtocol nmea({}, sink_);
  GarminProtocol garmin({}, sink_);
  const std::array<GpsProtocol*, 2> protocols{&nmea, &garmin};
  std::u16string label = u"COM";
  for (const char c : std::to_string(info.number)) label += static_cast<char16_t>(c);
  readPort(info.path, port, label, protocols, signals_, sink_, indicator);
  activeThreads_.fetch_sub(1);
  port.close();
}

void GpsInput::scanGpsd(const GpsdAddress& address, const ScanIndicator& indicator) {
  readGpsd(address, signals_, sink_, indicator, lookups_);
  activeThreads_.fetch_sub(1);
}

void GpsInput::startScanning() {
  sink_.setStatusText(kNoConnection);
  if (!settings_.readSettingBool("ScanCOMPorts", true)) return;
  beginScan();
}

void GpsInput::beginScan() {
  stopScanning();
  // No thread runs now: the scan's signals and counters start afresh.
  signals_.reset();
  activeThreads_ = 0;
  stopRequested_ = false;
  const auto start = [&](auto body) {
    activeThreads_.fetch_add(1);
    {
      std::lock_guard lock(endMutex_);
      ++running_;
    }
    threads_.emplace_back([this, body = std::move(body)] {
      body();
      threadEnded();
    });
  };
  for (const SerialPortInfo& info : scanPortList()) {
    if (info.number < 1 || info.number > kMaxComPorts) continue;
    if (settings_.readSettingInt("Enable_COM" + std::to_string(info.number), 1) == 0) continue;
    start([this, info, indicator = indicator_] { scanPort(info, indicator); });
  }
  if (gpsd_) start([this, address = *gpsd_, indicator = indicator_] { scanGpsd(address, indicator); });
  scanning_ = true;
}

bool GpsInput::stopScanning() {
  stopRequested_ = true;
  scanning_ = false;
  signals_.setStop();
  bool inTime = true;
  {
    std::unique_lock lock(endMutex_);
    inTime = ended_.wait_for(lock, std::chrono::milliseconds(kStopWaitMs), [this] { return running_ == 0; });
  }
  // Every wait of a reading thread is short and watches the stop: joining ends.
  for (std::thread& thread : threads_) thread.join();
  threads_.clear();
  sink_.setStatusText(kNoConnection);
  return inTime;
}

bool GpsInput::receiverFound() const { return !signals_.stopSet() && signals_.foundSet(); }

void GpsInput::setScanRoots(const SerialRoots& roots, bool discover) {
  roots_ = roots;
  discover_ = discover;
}

void GpsInput::addScanDevice(const std::string& path) { devices_.push_back(path); }

void GpsInput::setGpsdSource(const std::string& host, uint16_t port) { gpsd_ = GpsdAddress{host, port}; }

void GpsInput::clearScanSources() {
  devices_.clear();
  gpsd_.reset();
}

std::vector<SerialPortInfo> GpsInput::scanPortList() const {
  SerialRoots roots = roots_;
  if (!discover_) roots.dev.clear();
  return assignPortNumbers(discoverSerialPorts(roots, devices_), settings_);
}

bool GpsInput::addGpsOption(std::string_view value, std::string& error) {
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

void GpsInput::setScanIndicator(ScanIndicator indicator) { indicator_ = std::move(indicator); }

}  // namespace orvel
