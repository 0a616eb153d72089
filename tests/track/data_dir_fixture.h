#pragma once
// A fresh scratch data folder for each test, with settings that have no file (every read
// gives its default) and messages that are recorded. Each test makes the track objects it
// needs over them; nothing outlives the test.
#include <gtest/gtest.h>

#include <filesystem>

#include "common/torture.h"
#include "common/test_data.h"
#include "core/message.h"
#include "core/settings.h"

namespace orvel::test {

class DataDirTest : public ::testing::Test {
 protected:
  // A child test works in the folder its parent gave it.
  const std::filesystem::path dir =
      inChildTest() ? childFolder() : scratchDir(::testing::UnitTest::GetInstance()->current_test_info()->name());
  Settings settings;
  Messages messages;
  MessageRecorder recorded{messages};
};

}  // namespace orvel::test
