#pragma once
// A settings store in a fresh folder of its own for each test.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>

#include "core/settings.h"
#include "common/test_data.h"

namespace orvel::test {

class SettingsStore : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = scratchDir("settings");
    file_ = dir_ / "Orvel" / "GisOrvel.conf";
    ASSERT_EQ(settings_.openSettingsAt(file_), 0);
  }

  // The store under test, by the names the program calls it with.
  int32_t readSettingInt(std::string_view name, int32_t fallback) { return settings_.readSettingInt(name, fallback); }
  bool readSettingBool(std::string_view name, bool fallback) { return settings_.readSettingBool(name, fallback); }
  std::u16string readSettingString(std::string_view name, std::u16string_view fallback, size_t capacity = 256) {
    return settings_.readSettingString(name, fallback, capacity);
  }
  void writeSettingInt(std::string_view name, int32_t value) { settings_.writeSettingInt(name, value); }
  void writeSettingBool(std::string_view name, bool value) { settings_.writeSettingBool(name, value); }
  void writeSettingString(std::string_view name, std::u16string_view text) { settings_.writeSettingString(name, text); }

  void store(std::string_view bytes) { writeText(file_, bytes); }
  std::string stored() const { return readText(file_); }
  std::filesystem::path badCopy() const { return std::filesystem::path(file_) += ".bad"; }

  Settings settings_;
  std::filesystem::path dir_;
  std::filesystem::path file_;
};

}  // namespace orvel::test
