#include "gps/port_numbers.h"

#include <algorithm>
#include <array>
#include <string>

#include "core/settings.h"
#include "core/utf.h"

namespace orvel {

namespace {

std::string ownerSetting(int number) { return "Device_COM" + std::to_string(number); }

}  // namespace

std::vector<SerialPortInfo> assignPortNumbers(std::vector<SerialPortInfo> ports, Settings& settings) {
  // owners[n - 1]: the key that owns number n, empty when none does.
  std::array<std::string, kMaxComPorts> owners;
  for (int n = 1; n <= kMaxComPorts; ++n) {
    owners[static_cast<size_t>(n - 1)] = utf16ToUtf8(settings.readSettingString(ownerSetting(n), u"", 1024));
  }
  std::array<bool, kMaxComPorts> present{};
  std::vector<SerialPortInfo*> newcomers;
  for (SerialPortInfo& port : ports) {
    const auto owned = std::find(owners.begin(), owners.end(), port.key);
    if (port.key.empty() || owned == owners.end()) {
      port.number = 0;
      newcomers.push_back(&port);
      continue;
    }
    const size_t slot = static_cast<size_t>(owned - owners.begin());
    port.number = static_cast<int>(slot) + 1;
    present[slot] = true;
  }
  for (SerialPortInfo* port : newcomers) {
    size_t slot = 0;
    while (slot < owners.size() && (present[slot] || !owners[slot].empty())) ++slot;
    if (slot == owners.size()) {
      slot = 0;
      while (slot < owners.size() && present[slot]) ++slot;
    }
    if (slot == owners.size()) continue;  // discovery never lists more than 19
    port->number = static_cast<int>(slot) + 1;
    present[slot] = true;
    owners[slot] = port->key;
    settings.writeSettingString(ownerSetting(port->number), utf8ToUtf16(port->key).value_or(u""));
  }
  std::erase_if(ports, [](const SerialPortInfo& port) { return port.number == 0; });
  std::sort(ports.begin(), ports.end(),
            [](const SerialPortInfo& a, const SerialPortInfo& b) { return a.number < b.number; });
  return ports;
}

}  // namespace orvel
