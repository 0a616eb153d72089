#include "gps/serial_ports.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <string_view>
#include <system_error>

namespace orvel {
namespace {

namespace fs = std::filesystem;

constexpr std::array<std::string_view, 4> kFamilies{"ttyS", "ttyUSB", "ttyACM", "rfcomm"};

// The family index of a device name and its number; false for other names.
bool classify(const std::string& name, size_t& family, unsigned long& number) {
  for (size_t f = 0; f < kFamilies.size(); ++f) {
    const std::string_view prefix = kFamilies[f];
    if (name.size() <= prefix.size() || name.compare(0, prefix.size(), prefix) != 0) continue;
    const std::string digits = name.substr(prefix.size());
    if (digits.size() > 6 || !std::all_of(digits.begin(), digits.end(), [](char c) { return c >= '0' && c <= '9'; })) {
      continue;
    }
    family = f;
    number = std::stoul(digits);
    return true;
  }
  return false;
}

// The first line of a small sysfs attribute, trimmed; empty when it cannot be read.
std::string readAttribute(const fs::path& file) {
  std::ifstream in(file);
  std::string line;
  if (!in || !std::getline(in, line)) return {};
  while (!line.empty() && (line.back() == ' ' || line.back() == '\r' || line.back() == '\t')) line.pop_back();
  size_t start = 0;
  while (start < line.size() && line[start] == ' ') ++start;
  return line.substr(start, 128);
}

// A ttyS node stands for a real UART only when sysfs has a device behind it and, where the
// serial core tells the UART type, that type is known (0 is "no UART here").
bool isRealUart(const SerialRoots& roots, const std::string& node) {
  const fs::path entry = roots.sys / "class" / "tty" / node;
  std::error_code ec;
  if (!fs::exists(entry / "device", ec)) return false;
  const std::string type = readAttribute(entry / "type");
  return type.empty() || type != "0";
}

// The links in /dev/serial/by-id by the device each one names. udev makes them for USB
// devices from their vendor, product and serial number, so they stay the same whichever
// socket or order the devices are plugged in.
std::vector<std::pair<fs::path, std::string>> byIdLinks(const SerialRoots& roots) {
  std::vector<std::pair<fs::path, std::string>> links;
  if (roots.dev.empty()) return links;
  std::error_code ec;
  for (fs::directory_iterator it(roots.dev / "serial" / "by-id", ec), end; !ec && it != end; it.increment(ec)) {
    std::error_code target;
    const fs::path device = fs::canonical(it->path(), target);
    if (!target) links.emplace_back(device, it->path().string());
  }
  std::sort(links.begin(), links.end());
  return links;
}

std::string deviceKey(const std::vector<std::pair<fs::path, std::string>>& links, const std::string& path) {
  std::error_code ec;
  const fs::path device = fs::canonical(path, ec);
  if (!ec) {
    for (const auto& [target, link] : links) {
      if (target == device) return link;
    }
  }
  return path;
}

}  // namespace

bool serialNameLess(const std::string& a, const std::string& b) {
  size_t fa = kFamilies.size(), fb = kFamilies.size();
  unsigned long na = 0, nb = 0;
  const bool ka = classify(a, fa, na), kb = classify(b, fb, nb);
  if (ka != kb) return ka;
  if (!ka) return a < b;
  if (fa != fb) return fa < fb;
  return na < nb;
}

std::string sysfsDeviceName(const SerialRoots& roots, const std::string& node) {
  std::error_code ec;
  const fs::path link = roots.sys / "class" / "tty" / node / "device";
  fs::path device = fs::canonical(link, ec);
  if (ec) return {};
  // A USB serial adapter or modem: the tty's device is an interface (or, for adapters, a
  // port below it); the USB device with its product text is a few levels up.
  fs::path at = device;
  for (int up = 0; up < 4 && !at.empty() && at != at.root_path(); ++up, at = at.parent_path()) {
    const std::string product = readAttribute(at / "product");
    if (product.empty()) continue;
    const std::string maker = readAttribute(at / "manufacturer");
    return maker.empty() ? product : maker + " " + product;
  }
  // Other hardware: the driver's name. Newer kernels put generic "port" and "ctrl" devices
  // of the serial core between the tty and the hardware; their drivers say nothing.
  at = device;
  for (int up = 0; up < 4 && !at.empty() && at != at.root_path(); ++up, at = at.parent_path()) {
    const fs::path driver = fs::canonical(at / "driver", ec);
    if (ec) continue;
    const std::string name = driver.filename().string();
    if (name != "port" && name != "ctrl") return name;
  }
  return {};
}

std::vector<SerialPortInfo> discoverSerialPorts(const SerialRoots& roots, std::span<const std::string> extra) {
  std::vector<std::string> nodes;
  std::error_code ec;
  // An empty dev root: only the extra paths.
  fs::directory_iterator it, end;
  if (!roots.dev.empty()) it = fs::directory_iterator(roots.dev, ec);
  for (; !ec && it != end; it.increment(ec)) {
    const std::string name = it->path().filename().string();
    size_t family = 0;
    unsigned long number = 0;
    if (!classify(name, family, number)) continue;
    if (kFamilies[family] == "ttyS" && !isRealUart(roots, name)) continue;
    nodes.push_back(name);
  }
  std::sort(nodes.begin(), nodes.end(), serialNameLess);

  std::vector<SerialPortInfo> ports;
  for (const std::string& node : nodes) {
    std::string name = sysfsDeviceName(roots, node);
    ports.push_back({0, (roots.dev / node).string(), name.empty() ? node : name + " (" + node + ")", {}});
  }

  std::vector<SerialPortInfo> added;
  const auto same = [](const std::string& a, const std::string& b) {
    std::error_code e1, e2;
    const fs::path ca = fs::weakly_canonical(a, e1), cb = fs::weakly_canonical(b, e2);
    return a == b || (!e1 && !e2 && ca == cb);
  };
  for (const std::string& path : extra) {
    if (path.empty()) continue;
    const auto known = [&](const SerialPortInfo& p) { return same(p.path, path); };
    if (std::any_of(ports.begin(), ports.end(), known) || std::any_of(added.begin(), added.end(), known)) continue;
    added.push_back({0, path, path, {}});
  }
  if (added.size() > static_cast<size_t>(kMaxComPorts)) added.resize(kMaxComPorts);
  const size_t room = static_cast<size_t>(kMaxComPorts) - added.size();
  if (ports.size() > room) ports.resize(room);
  ports.insert(ports.end(), added.begin(), added.end());
  const auto links = byIdLinks(roots);
  for (size_t i = 0; i < ports.size(); ++i) {
    ports[i].number = static_cast<int>(i) + 1;
    ports[i].key = deviceKey(links, ports[i].path);
  }
  return ports;
}

}  // namespace orvel
