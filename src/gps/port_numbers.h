#pragma once
// COM numbers that stay with their devices. A tick "Enable_COMn" must keep meaning the same
// receiver when other devices are plugged in or out, so each device keeps the number it was
// first given for as long as the settings file lives: the string setting "Device_COMn" names
// the device (by its key, see SerialPortInfo) that owns number n.
#include <vector>

#include "gps/serial_ports.h"

namespace orvel {

class Settings;

// Gives every port its device's remembered number. A device seen for the first time takes
// the lowest number no device owns and is remembered under it; when all 19 are owned, the
// lowest number whose device is absent passes to it. Returns the ports ordered by number.
std::vector<SerialPortInfo> assignPortNumbers(std::vector<SerialPortInfo> ports, Settings& settings);

}  // namespace orvel
