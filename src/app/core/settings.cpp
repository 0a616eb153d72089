#include "app/core/settings.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <mutex>
#include <sys/stat.h>
#include <unistd.h>

#include "app/core/atomic_file.h"
#include "app/core/settings_file.h"

namespace orvel {
namespace {

// The file holds a few dozen short lines; anything this large is not a settings file.
constexpr size_t kMaxFileSize = 1 << 20;

// Guards the file name and every read-modify-write of the file: settings are used by the
// user-interface thread and by the port scanning at start-up.
std::mutex storeMutex;
std::filesystem::path storeFile;  // empty: no usable store

// The current contents. A missing file is an empty store; a file that cannot be read in full
// (not a regular file, a read error, too large) is damaged and reads as empty.
SettingsContent loadLocked() {
  SettingsContent content;
  const int fd = ::open(storeFile.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd < 0) {
    content.damaged = errno != ENOENT;
    return content;
  }
  struct stat info {};
  std::string bytes;
  bool readable = ::fstat(fd, &info) == 0 && S_ISREG(info.st_mode);
  char buffer[16384];
  while (readable && bytes.size() <= kMaxFileSize) {
    const ssize_t got = ::read(fd, buffer, sizeof buffer);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) {
      readable = got == 0;
      break;
    }
    bytes.append(buffer, static_cast<size_t>(got));
  }
  ::close(fd);
  if (!readable || bytes.size() > kMaxFileSize) {
    content.damaged = true;
    return content;
  }
  return parseSettings(bytes);
}

// Keeps the damaged file beside it as <file>.bad before it is rewritten, so that nothing the
// user saved is lost without trace. A hard link keeps the exact bytes at no cost; where links
// are impossible the bytes are copied.
bool keepDamagedCopyLocked() {
  std::filesystem::path bad = storeFile;
  bad += ".bad";
  std::filesystem::path staged = storeFile;
  staged += ".bad-link";
  ::unlink(staged.c_str());
  if (::link(storeFile.c_str(), staged.c_str()) == 0) {
    if (::rename(staged.c_str(), bad.c_str()) == 0) return true;
    ::unlink(staged.c_str());
  }
  std::error_code error;
  std::filesystem::copy_file(storeFile, bad, std::filesystem::copy_options::overwrite_existing, error);
  return !error;
}

void writeLineLocked(SettingsLine line) {
  if (storeFile.empty()) return;
  SettingsContent content = loadLocked();
  // Without a copy of a damaged file, rewriting it would drop what could not be read.
  if (content.damaged && !keepDamagedCopyLocked()) return;
  putSetting(content, std::move(line));
  writeFileAtomically(storeFile, formatSettings(content));
}

std::filesystem::path defaultSettingsFile() {
  if (const char* file = std::getenv("ORVEL_CONFIG_FILE"); file && *file) return file;
  std::filesystem::path config;
  if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg && *xdg == '/') {
    config = xdg;
  } else if (const char* home = std::getenv("HOME"); home && *home) {
    config = std::filesystem::path(home) / ".config";
  } else {
    return {};
  }
  return config / "Orvel" / "GisOrvel.conf";
}

}  // namespace

int openSettings() {
  const std::filesystem::path file = defaultSettingsFile();
  if (file.empty()) {
    closeSettings();
    return ENOENT;
  }
  return openSettingsAt(file);
}

int openSettingsAt(const std::filesystem::path& file) {
  std::lock_guard lock(storeMutex);
  storeFile.clear();
  const std::filesystem::path folder = file.parent_path();
  if (!folder.empty()) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) return error.value();
    if (!std::filesystem::is_directory(folder, error)) return ENOTDIR;
  }
  storeFile = file;
  return 0;
}

void closeSettings() {
  std::lock_guard lock(storeMutex);
  storeFile.clear();
}

std::filesystem::path settingsFile() {
  std::lock_guard lock(storeMutex);
  return storeFile;
}

int32_t readSettingInt(std::string_view name, int32_t fallback) {
  std::lock_guard lock(storeMutex);
  if (storeFile.empty()) return fallback;
  const SettingsContent content = loadLocked();
  const SettingsLine* line = findSetting(content, name);
  return line && line->kind == SettingsLine::Kind::Dword ? line->number : fallback;
}

bool readSettingBool(std::string_view name, bool fallback) { return readSettingInt(name, fallback ? 1 : 0) != 0; }

std::u16string readSettingString(std::string_view name, std::u16string_view fallback, size_t capacity) {
  std::u16string text;
  {
    std::lock_guard lock(storeMutex);
    const SettingsContent content = storeFile.empty() ? SettingsContent{} : loadLocked();
    const SettingsLine* line = findSetting(content, name);
    text = line && line->kind == SettingsLine::Kind::String ? line->text : std::u16string(fallback);
  }
  if (text.size() > capacity) {
    text.resize(capacity);
    // Never leave half of a surrogate pair at the end.
    if (!text.empty() && text.back() >= 0xD800 && text.back() <= 0xDBFF) text.pop_back();
  }
  return text;
}

void writeSettingInt(std::string_view name, int32_t value) {
  if (!isValidSettingName(name)) return;
  std::lock_guard lock(storeMutex);
  writeLineLocked(makeDwordLine(name, value));
}

void writeSettingBool(std::string_view name, bool value) { writeSettingInt(name, value ? 1 : 0); }

void writeSettingString(std::string_view name, std::u16string_view text) {
  if (!isValidSettingName(name)) return;
  std::lock_guard lock(storeMutex);
  writeLineLocked(makeStringLine(name, text));
}

}  // namespace orvel
