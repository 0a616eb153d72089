#pragma once
// The user's settings: named values in one typed file, $XDG_CONFIG_HOME/Orvel/GisOrvel.conf
// (one "name type value" line each; types dword and string). Reads never fail: anything
// missing, unreadable or of the wrong type reads as the caller's default. Every write goes
// to disk at once and replaces the file atomically.
//
// A value changed outside the program is used at its next read: the store keeps the parsed
// file and, at each read, compares the file's identity (device, inode, size, modification
// and change times) with the one it parsed, reading the file again only when it changed. A
// read therefore costs one stat, never a file read, while nobody else touches the file.
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>

#include "core/atomic_file.h"
#include "core/settings_file.h"

namespace orvel {

class Settings {
 public:
  // A store with no file: reads give defaults, writes do nothing, until opened.
  Settings() = default;
  Settings(const Settings&) = delete;
  Settings& operator=(const Settings&) = delete;

  // Opens the store at its usual place (ORVEL_CONFIG_FILE overrides it). Returns 0 on
  // success; on failure every read gives its default and every write does nothing.
  int openSettings();
  // Opens the store at an explicit file.
  int openSettingsAt(const std::filesystem::path& file);
  // Forgets the open store (reads give defaults, writes do nothing).
  void closeSettings();
  // The file in use, empty when none.
  std::filesystem::path settingsFile() const;

  int32_t readSettingInt(std::string_view name, int32_t fallback) const;
  bool readSettingBool(std::string_view name, bool fallback) const;
  // At most `capacity` characters of the stored text; the default when absent or not a string.
  std::u16string readSettingString(std::string_view name, std::u16string_view fallback,
                                   size_t capacity = 256) const;

  void writeSettingInt(std::string_view name, int32_t value);
  void writeSettingBool(std::string_view name, bool value);
  void writeSettingString(std::string_view name, std::u16string_view text);

  // How often the file's bytes were read (not merely checked) since the store was made.
  uint64_t fileReads() const;
  // Tests pass a hook that stands in for a crash just before a write replaces the file.
  void setBeforeReplaceHook(BeforeReplaceHook hook);

 private:
  // Who the file on disk is; a different identity means different contents.
  struct Identity {
    bool exists = false;
    uint64_t device = 0, inode = 0, size = 0;
    int64_t modifiedNs = 0, changedNs = 0;
    friend bool operator==(const Identity&, const Identity&) = default;
  };

  Identity identityLocked() const;
  // The current contents, read again only when the file's identity changed.
  const SettingsContent& contentLocked() const;
  SettingsContent loadLocked() const;
  bool keepDamagedCopyLocked() const;
  void writeLineLocked(SettingsLine line);

  // Settings are used by the user-interface thread and by the port scanning.
  mutable std::mutex mutex_;
  std::filesystem::path file_;  // empty: no usable store
  mutable SettingsContent cache_;
  mutable Identity cachedIdentity_;
  mutable bool cacheValid_ = false;
  mutable uint64_t fileReads_ = 0;
  BeforeReplaceHook beforeReplace_ = nullptr;
};

}  // namespace orvel
