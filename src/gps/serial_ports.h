#pragma once
// The serial ports the scanner may open, numbered COM1..COM19 in a stable order: the UARTs,
// USB serial adapters and modems, and Bluetooth serial links found under /dev, then any
// device paths the user named (a pseudo-terminal too).
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace orvel {

inline constexpr int kMaxComPorts = 19;

struct SerialPortInfo {
  int number = 0;     // COM number, 1..19
  std::string path;   // the device to open
  std::string name;   // what the port list shows beside "COM%d:"
  std::string key;    // who the device is: its /dev/serial/by-id link where it has one, else `path`
};

// Where devices are looked for; tests point both at a made-up tree.
struct SerialRoots {
  std::filesystem::path dev = "/dev";
  std::filesystem::path sys = "/sys";
};

// The devices under roots.dev named ttyS*, ttyUSB*, ttyACM* and rfcomm*, ordered by that
// family then by number. A ttyS device counts only when sysfs shows a UART behind it (the
// kernel creates placeholders for ports that are not there). `extra` paths follow, each once
// (a path naming a discovered device is not repeated); when there are more than 19 ports in
// all, discovered ones are left out so that every extra path keeps a number. The ports are
// numbered 1, 2, ... in this order; assignPortNumbers (port_numbers.h) gives the numbers that
// stay with each device.
std::vector<SerialPortInfo> discoverSerialPorts(const SerialRoots& roots, std::span<const std::string> extra);

// The name sysfs gives device `node` (for example "ttyUSB0"): "manufacturer product" of the
// USB device behind it, the driver's name for other hardware, otherwise empty.
std::string sysfsDeviceName(const SerialRoots& roots, const std::string& node);

// Orders device names as discovery lists them: family, then the number ("ttyS2" before
// "ttyS10").
bool serialNameLess(const std::string& a, const std::string& b);

}  // namespace orvel
