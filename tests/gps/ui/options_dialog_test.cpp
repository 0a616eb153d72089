// The options dialog against a settings file of its own: what it shows when it opens, and
// what OK writes and sets going, in its order.
#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QTreeWidget>
#include <cstdlib>
#include <string>
#include <vector>

#include "core/settings.h"
#include "common/test_data.h"
#include "gps/gps_state.h"
#include "gps/port_scanner.h"
#include "gps/ui/options_dialog.h"

namespace orvel {
namespace {

QApplication& app() {
  static int argc = 1;
  static char name[] = "options_dialog_test";
  static char* argv[] = {name, nullptr};
  ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
  static QApplication instance(argc, argv);
  return instance;
}

class OptionsDialogTest : public ::testing::Test {
 protected:
  void SetUp() override {
    app();
    const auto dir = test::scratchDir("options-" + std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()));
    openSettingsAt(dir / "GisOrvel.conf");
    stopScanning();
    clearScanSources();
    setScanRoots({}, false);
    // Paths that cannot be opened: a scan starts threads that end at once.
    addScanDevice("/nonexistent/ttyUSB0");
    addScanDevice("/nonexistent/rfcomm0");
  }
  void TearDown() override {
    stopScanning();
    clearScanSources();
    setScanRoots({});
    closeSettings();
  }

  OptionsActions recordingActions() {
    return OptionsActions{[this] { calls.push_back("resetRotation"); },
                          [this](bool on) { calls.push_back(on ? "record on" : "record off"); },
                          [this] { calls.push_back("redraw"); }};
  }
  std::vector<std::string> calls;
};

TEST_F(OptionsDialogTest, OpensWithTheSettingsAndThePorts) {
  writeSettingBool("RotateMap", true);
  writeSettingBool("ShowTrack", false);
  writeSettingInt("Enable_COM2", 0);
  OptionsDialog dialog(recordingActions());
  EXPECT_TRUE(dialog.keepVisible()->isChecked());
  EXPECT_TRUE(dialog.rotateMap()->isChecked());
  EXPECT_FALSE(dialog.recordTrack()->isChecked());
  EXPECT_FALSE(dialog.showTrack()->isChecked());
  EXPECT_FALSE(dialog.scanPorts()->isChecked()) << "no scan runs";
  QTreeWidget* ports = dialog.portList();
  EXPECT_EQ(ports->headerItem()->text(0), "Порт");
  EXPECT_EQ(ports->headerItem()->text(1), "Устройство");
  ASSERT_EQ(ports->topLevelItemCount(), 2);
  EXPECT_EQ(ports->topLevelItem(0)->text(0), "COM1:");
  EXPECT_EQ(ports->topLevelItem(0)->text(1), "/nonexistent/ttyUSB0");
  EXPECT_EQ(ports->topLevelItem(0)->checkState(0), Qt::Checked);
  EXPECT_EQ(ports->topLevelItem(1)->checkState(0), Qt::Unchecked);
  EXPECT_NE(dialog.findChild<QCheckBox*>("1007"), nullptr);
}

TEST_F(OptionsDialogTest, OkWritesAndAppliesInOrder) {
  writeSettingBool("RotateMap", true);
  OptionsDialog dialog(recordingActions());
  dialog.rotateMap()->setChecked(false);
  dialog.recordTrack()->setChecked(true);
  dialog.keepVisible()->setChecked(false);
  dialog.scanPorts()->setChecked(true);
  dialog.portList()->topLevelItem(1)->setCheckState(0, Qt::Unchecked);
  dialog.accept();

  EXPECT_EQ(calls, (std::vector<std::string>{"resetRotation", "record on", "redraw"}));
  EXPECT_FALSE(readSettingBool("KeepVisible", true));
  EXPECT_FALSE(readSettingBool("RotateMap", true));
  EXPECT_TRUE(readSettingBool("RecordTrack", false));
  EXPECT_TRUE(readSettingBool("ShowTrack", false));
  EXPECT_TRUE(readSettingBool("ScanCOMPorts", false));
  EXPECT_TRUE(isScanning());
  EXPECT_EQ(readSettingInt("Enable_COM1", -1), 1);
  EXPECT_EQ(readSettingInt("Enable_COM2", -1), 0);
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
}

TEST_F(OptionsDialogTest, PortsTickedWithScanningOnWaitForTheNextScan) {
  writeSettingInt("Enable_COM1", 0);
  writeSettingInt("Enable_COM2", 0);
  OptionsDialog dialog({});
  dialog.scanPorts()->setChecked(true);
  dialog.portList()->topLevelItem(0)->setCheckState(0, Qt::Checked);
  dialog.accept();
  // The scan began with both ports off: no thread, and the status did not say that no port
  // could be opened.
  EXPECT_TRUE(isScanning());
  EXPECT_EQ(activeScanThreads(), 0);
  EXPECT_EQ(gpsSnapshot().statusText, u"Нет соединения с GPS-приемником");
  EXPECT_EQ(readSettingInt("Enable_COM1", -1), 1);
}

TEST_F(OptionsDialogTest, TurningScanningOffStopsItAndCancelWritesNothing) {
  beginScan();
  {
    OptionsDialog dialog({});
    EXPECT_TRUE(dialog.scanPorts()->isChecked());
    dialog.scanPorts()->setChecked(false);
    dialog.accept();
  }
  EXPECT_FALSE(isScanning());
  EXPECT_TRUE(isGpsInputShutDown());
  EXPECT_FALSE(readSettingBool("ScanCOMPorts", true));

  OptionsDialog dialog(recordingActions());
  dialog.keepVisible()->setChecked(false);
  dialog.reject();
  EXPECT_TRUE(readSettingBool("KeepVisible", true));
  EXPECT_TRUE(calls.empty());
}

}  // namespace
}  // namespace orvel
