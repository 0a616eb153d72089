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
#include "gps/fix_processing.h"
#include "gps/gps_input.h"
#include "gps/gps_state.h"
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
    settings.openSettingsAt(dir / "GisOrvel.conf");
    input.setScanRoots({}, false);
    // Paths that cannot be opened: a scan starts threads that end at once.
    input.addScanDevice("/nonexistent/ttyUSB0");
    input.addScanDevice("/nonexistent/rfcomm0");
  }

  OptionsActions recordingActions() {
    return OptionsActions{[this] { calls.push_back("resetRotation"); },
                          [this](bool on) { calls.push_back(on ? "record on" : "record off"); },
                          [this] { calls.push_back("redraw"); }};
  }
  std::vector<std::string> calls;
  Settings settings;
  GpsState state;
  FixProcessor fixes{state};
  GpsInput input{fixes, settings};
};

TEST_F(OptionsDialogTest, OkWritesAndAppliesInOrder) {
  settings.writeSettingBool("RotateMap", true);
  OptionsDialog dialog(input, settings, recordingActions());
  dialog.rotateMap()->setChecked(false);
  dialog.recordTrack()->setChecked(true);
  dialog.keepVisible()->setChecked(false);
  dialog.scanPorts()->setChecked(true);
  dialog.portList()->topLevelItem(1)->setCheckState(0, Qt::Unchecked);
  dialog.accept();

  EXPECT_EQ(calls, (std::vector<std::string>{"resetRotation", "record on", "redraw"}));
  EXPECT_FALSE(settings.readSettingBool("KeepVisible", true));
  EXPECT_FALSE(settings.readSettingBool("RotateMap", true));
  EXPECT_TRUE(settings.readSettingBool("RecordTrack", false));
  EXPECT_TRUE(settings.readSettingBool("ShowTrack", false));
  EXPECT_TRUE(settings.readSettingBool("ScanCOMPorts", false));
  EXPECT_TRUE(input.isScanning());
  EXPECT_EQ(settings.readSettingInt("Enable_COM1", -1), 1);
  EXPECT_EQ(settings.readSettingInt("Enable_COM2", -1), 0);
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
}

TEST_F(OptionsDialogTest, TurningScanningOffStopsItAndCancelWritesNothing) {
  input.beginScan();
  {
    OptionsDialog dialog(input, settings, {});
    EXPECT_TRUE(dialog.scanPorts()->isChecked());
    dialog.scanPorts()->setChecked(false);
    dialog.accept();
  }
  EXPECT_FALSE(input.isScanning());
  EXPECT_TRUE(input.isGpsInputShutDown());
  EXPECT_FALSE(settings.readSettingBool("ScanCOMPorts", true));

  OptionsDialog dialog(input, settings, recordingActions());
  dialog.keepVisible()->setChecked(false);
  dialog.reject();
  EXPECT_TRUE(settings.readSettingBool("KeepVisible", true));
  EXPECT_TRUE(calls.empty());
}

}  // namespace
}  // namespace orvel
