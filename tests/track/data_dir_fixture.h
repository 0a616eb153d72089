#pragma once
// Points the data folder at a fresh scratch folder for each test and leaves the track
// stores closed behind it.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "common/test_data.h"
#include "track/active_track.h"
#include "track/mps_writer.h"
#include "track/waypoints.h"

namespace orvel::test {

class DataDirTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    dir = scratchDir(std::string(info->test_suite_name()) + "-" + info->name());
    ::setenv("ORVEL_DATA_DIR", dir.c_str(), 1);
  }
  void TearDown() override {
    closeTrackFile();
    closeTrackStore();
    stopRecording();
    freeWaypoints();
    setWaypointEditor(nullptr);
    ::unsetenv("ORVEL_DATA_DIR");
  }
  std::filesystem::path dir;
};

}  // namespace orvel::test
