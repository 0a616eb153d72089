// Serial device discovery in a made-up /dev and /sys, and the COM numbers each device keeps.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "common/test_data.h"
#include "core/settings.h"
#include "gps/port_numbers.h"
#include "gps/serial_ports.h"

namespace orvel {
namespace {

namespace fs = std::filesystem;

class SerialPortsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    root = test::scratchDir("serial-ports-" + std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()));
    roots.dev = root / "dev";
    roots.sys = root / "sys";
    fs::create_directories(roots.dev);
    fs::create_directories(roots.sys / "class" / "tty");
  }

  void touch(const fs::path& file, const std::string& text = "") {
    fs::create_directories(file.parent_path());
    std::ofstream(file) << text;
  }
  // /dev/NODE, and /sys/class/tty/NODE/device pointing at `device` below /sys/devices.
  void addNode(const std::string& node, const std::string& device = "") {
    touch(roots.dev / node);
    const fs::path entry = roots.sys / "class" / "tty" / node;
    fs::create_directories(entry);
    if (!device.empty()) {
      fs::create_directories(roots.sys / "devices" / device);
      fs::create_directory_symlink(roots.sys / "devices" / device, entry / "device");
    }
  }
  std::vector<std::string> paths(const std::vector<SerialPortInfo>& ports) {
    std::vector<std::string> out;
    for (const auto& p : ports) out.push_back(fs::path(p.path).filename().string());
    return out;
  }

  fs::path root;
  SerialRoots roots;
};

TEST_F(SerialPortsTest, OnlyRealUartsAndSerialFamiliesCountInStableOrder) {
  addNode("ttyS0", "platform/serial8250/tty/ttyS0");
  touch(roots.sys / "class/tty/ttyS0/type", "4\n");
  addNode("ttyS1", "platform/serial8250/tty/ttyS1");
  touch(roots.sys / "class/tty/ttyS1/type", "0\n");  // a placeholder: no UART there
  addNode("ttyS2");                                   // no device at all
  addNode("ttyS10", "pnp0/00:05");
  addNode("ttyUSB10", "usb1/1-4/1-4:1.0/ttyUSB10");
  addNode("ttyUSB9", "usb1/1-2/1-2:1.0/ttyUSB9");
  addNode("ttyUSB0", "usb1/1-1/1-1:1.0/ttyUSB0");
  addNode("ttyACM0", "usb1/1-3/1-3:1.0");
  addNode("rfcomm0");
  touch(roots.dev / "tty0");
  touch(roots.dev / "ttyUSBx");
  touch(roots.dev / "null");

  const auto ports = discoverSerialPorts(roots, {});
  EXPECT_EQ(paths(ports), (std::vector<std::string>{"ttyS0", "ttyS10", "ttyUSB0", "ttyUSB9", "ttyUSB10", "ttyACM0", "rfcomm0"}));
  for (size_t i = 0; i < ports.size(); ++i) EXPECT_EQ(ports[i].number, static_cast<int>(i) + 1);
}

TEST_F(SerialPortsTest, NamesComeFromTheUsbDeviceOrTheDriver) {
  addNode("ttyUSB0", "usb1/1-1/1-1:1.0/ttyUSB0");
  touch(roots.sys / "devices/usb1/1-1/product", "USB-Serial Controller\n");
  touch(roots.sys / "devices/usb1/1-1/manufacturer", "Prolific Technology Inc.\n");
  addNode("ttyACM0", "usb1/1-3/1-3:1.0");
  touch(roots.sys / "devices/usb1/1-3/product", "u-blox 7 - GPS/GNSS Receiver\n");
  // The serial core's generic port device sits between the tty and the UART's driver.
  addNode("ttyS0", "pnp0/00:00/00:00:0/00:00:0.0");
  fs::create_directories(roots.sys / "bus/serial-base/drivers/port");
  fs::create_directories(roots.sys / "bus/serial-base/drivers/ctrl");
  fs::create_directories(roots.sys / "bus/pnp/drivers/serial");
  fs::create_directory_symlink(roots.sys / "bus/serial-base/drivers/port", roots.sys / "devices/pnp0/00:00/00:00:0/00:00:0.0/driver");
  fs::create_directory_symlink(roots.sys / "bus/serial-base/drivers/ctrl", roots.sys / "devices/pnp0/00:00/00:00:0/driver");
  fs::create_directory_symlink(roots.sys / "bus/pnp/drivers/serial", roots.sys / "devices/pnp0/00:00/driver");
  addNode("rfcomm0");

  const auto ports = discoverSerialPorts(roots, {});
  ASSERT_EQ(ports.size(), 4u);
  EXPECT_EQ(ports[0].name, "serial (ttyS0)");
  EXPECT_EQ(ports[1].name, "Prolific Technology Inc. USB-Serial Controller (ttyUSB0)");
  EXPECT_EQ(ports[2].name, "u-blox 7 - GPS/GNSS Receiver (ttyACM0)");
  EXPECT_EQ(ports[3].name, "rfcomm0");
}

TEST_F(SerialPortsTest, AddedPathsFollowOnceAndKeepTheirNumbersWhenPortsOverflowOrAreAlone) {
  for (int i = 0; i < 25; ++i) addNode("ttyUSB" + std::to_string(i), "usb/" + std::to_string(i));
  const std::vector<std::string> extra{"/dev/pts/7", (roots.dev / "ttyUSB3").string(), "/dev/pts/7", "/dev/rfcomm4"};
  const auto ports = discoverSerialPorts(roots, extra);
  ASSERT_EQ(ports.size(), 19u);
  const auto names = paths(ports);
  EXPECT_EQ(names[16], "ttyUSB16");  // discovered ports beyond it made room
  EXPECT_EQ(std::count(names.begin(), names.end(), "ttyUSB3"), 1);
  EXPECT_EQ(ports[17].path, "/dev/pts/7");
  EXPECT_EQ(ports[17].name, "/dev/pts/7");
  EXPECT_EQ(ports[17].number, 18);
  EXPECT_EQ(ports[18].path, "/dev/rfcomm4");
  EXPECT_EQ(ports[18].number, 19);
  roots.dev.clear();  // no /dev to look in: the added paths alone
  const auto added = discoverSerialPorts(roots, std::vector<std::string>{"/dev/pts/3"});
  ASSERT_EQ(added.size(), 1u);
  EXPECT_EQ(added[0].number, 1);
  EXPECT_EQ(added[0].path, "/dev/pts/3");
}

TEST_F(SerialPortsTest, EachDeviceKeepsItsComNumberWhateverIsPluggedInOrOut) {
  Settings settings;
  ASSERT_EQ(settings.openSettingsAt(root / "GisOrvel.conf"), 0);
  // The nodes plugged in, each with its /dev/serial/by-id link or none, and their numbers then.
  const std::pair<std::vector<std::pair<std::string, std::string>>, std::string> steps[] = {
      {{{"ttyS0", ""}, {"ttyUSB0", "usb-Prolific_USB-Serial-if00-port0"}, {"ttyACM0", "usb-u-blox_7-if00"}},
       "ttyS0=1 ttyUSB0=2 ttyACM0=3 "},
      // The Prolific adapter is unplugged and another receiver takes its node name.
      {{{"ttyS0", ""}, {"ttyUSB0", "usb-FTDI_FT232R_A1B2-if00-port0"}, {"ttyACM0", "usb-u-blox_7-if00"}},
       "ttyS0=1 ttyACM0=3 ttyUSB0=4 "},
      // The Prolific adapter comes back under another node name: its number is still 2.
      {{{"ttyUSB1", "usb-Prolific_USB-Serial-if00-port0"}, {"ttyACM0", "usb-u-blox_7-if00"}}, "ttyUSB1=2 ttyACM0=3 "},
  };
  for (const auto& [plugged, numbers] : steps) {
    fs::remove_all(roots.dev);
    fs::remove_all(roots.sys);
    fs::create_directories(roots.dev / "serial" / "by-id");
    for (const auto& [node, byId] : plugged) {
      addNode(node, "dev/" + node);
      if (!byId.empty()) fs::create_symlink(roots.dev / node, roots.dev / "serial" / "by-id" / byId);
    }
    std::string got;
    for (const SerialPortInfo& port : assignPortNumbers(discoverSerialPorts(roots, {}), settings)) {
      got += fs::path(port.path).filename().string() + "=" + std::to_string(port.number) + " ";
    }
    EXPECT_EQ(got, numbers);
  }
}

}  // namespace
}  // namespace orvel
