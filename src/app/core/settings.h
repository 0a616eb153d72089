#pragma once
// The user's settings: named values in one typed file, $XDG_CONFIG_HOME/Orvel/GisOrvel.conf
// (one "name type value" line each; types dword and string). Reads never fail: anything
// missing, unreadable or of the wrong type reads as the caller's default. Every write goes
// to disk at once and replaces the file atomically. Settings are never cached by callers.
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace orvel {

// Opens the store at its usual place. Returns 0 on success; on failure every read gives its
// default and every write does nothing.
int openSettings();
// Opens the store at an explicit file (tests, and the ORVEL_CONFIG_FILE override).
int openSettingsAt(const std::filesystem::path& file);
// Forgets the open store (reads give defaults, writes do nothing).
void closeSettings();
// The file in use, empty when none.
std::filesystem::path settingsFile();

int32_t readSettingInt(std::string_view name, int32_t fallback);
bool readSettingBool(std::string_view name, bool fallback);
// At most `capacity` characters of the stored text; the default when absent or not a string.
std::u16string readSettingString(std::string_view name, std::u16string_view fallback, size_t capacity = 256);

void writeSettingInt(std::string_view name, int32_t value);
void writeSettingBool(std::string_view name, bool value);
void writeSettingString(std::string_view name, std::u16string_view text);

}  // namespace orvel
