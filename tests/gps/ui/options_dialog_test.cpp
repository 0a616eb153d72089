// The options dialog against a settings file of its own: turning scanning off stops it, and
// Cancel writes nothing and calls nothing.
#include <gtest/gtest.h>

#include <QCheckBox>

#include "common/test_data.h"
#include "core/settings.h"
#include "gps/fix_processing.h"
#include "gps/gps_input.h"
#include "gps/gps_state.h"
#include "gps/ui/options_dialog.h"

namespace orvel {
namespace {

TEST(OptionsDialog, TurningScanningOffStopsItAndCancelWritesNothing) {
  Settings settings;
  settings.openSettingsAt(test::scratchDir("options") / "GisOrvel.conf");
  GpsState state;
  FixProcessor fixes{state};
  GpsInput input{fixes, settings};
  input.setScanRoots({}, false);
  input.addScanDevice("/nonexistent/ttyUSB0");  // cannot be opened: its thread ends at once
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

  int calls = 0;
  OptionsDialog dialog(input, settings, OptionsActions{[&] { ++calls; }, [&](bool) { ++calls; }, [&] { ++calls; }});
  dialog.keepVisible()->setChecked(false);
  dialog.reject();
  EXPECT_TRUE(settings.readSettingBool("KeepVisible", true));
  EXPECT_EQ(calls, 0);
}

}  // namespace
}  // namespace orvel
