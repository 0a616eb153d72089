#include "core/settings.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvel {
namespace {

// The file holds a few dozen short lines; anything this large is not a settings file.
constexpr size_t kMaxFileSize = 1 << 20;

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

int64_t nanoseconds(const timespec& t) { return int64_t{t.tv_sec} * 1000000000 + t.tv_nsec; }

}  // namespace

Settings::Identity Settings::identityLocked() const {
  struct stat info {};
  if (::stat(file_.c_str(), &info) != 0) return {};
  return {true, info.st_dev, info.st_ino, static_cast<uint64_t>(info.st_size),
          nanoseconds(info.st_mtim), nanoseconds(info.st_ctim)};
}

const SettingsContent& Settings::contentLocked() const {
  const Identity now = identityLocked();
  if (!cacheValid_ || !(now == cachedIdentity_)) {
    cache_ = loadLocked();
    // A file changed while it was read is caught by the next read: its identity moved on.
    cachedIdentity_ = now;
    cacheValid_ = true;
  }
  return cache_;
}

// A missing file is an empty store; a file that cannot be read in full (not a regular file,
// a read error, too large) is damaged and reads as empty.
SettingsContent Settings::loadLocked() const {
  SettingsContent content;
  ++fileReads_;
  const int fd = ::open(file_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
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
bool Settings::keepDamagedCopyLocked() const {
  std::filesystem::path bad = file_;
  bad += ".bad";
  std::filesystem::path staged = file_;
  staged += ".bad-link";
  ::unlink(staged.c_str());
  if (::link(file_.c_str(), staged.c_str()) == 0) {
    if (::rename(staged.c_str(), bad.c_str()) == 0) return true;
    ::unlink(staged.c_str());
  }
  std::error_code error;
  std::filesystem::copy_file(file_, bad, std::filesystem::copy_options::overwrite_existing, error);
  return !error;
}

void Settings::writeLineLocked(SettingsLine line) {
  if (file_.empty()) return;
  // A write always starts from the file as it is now, whatever the cache holds.
  cacheValid_ = false;
  SettingsContent content = loadLocked();
  // Without a copy of a damaged file, rewriting it would drop what could not be read.
  if (content.damaged && !keepDamagedCopyLocked()) return;
  putSetting(content, std::move(line));
  writeFileAtomically(file_, formatSettings(content), beforeReplace_);
}

int Settings::openSettings() {
  const std::filesystem::path file = defaultSettingsFile();
  if (file.empty()) {
    closeSettings();
    return ENOENT;
  }
  return openSettingsAt(file);
}

int Settings::openSettingsAt(const std::filesystem::path& file) {
  std::lock_guard lock(mutex_);
  file_.clear();
  cacheValid_ = false;
  const std::filesystem::path folder = file.parent_path();
  if (!folder.empty()) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) return error.value();
    if (!std::filesystem::is_directory(folder, error)) return ENOTDIR;
  }
  file_ = file;
  return 0;
}

void Settings::closeSettings() {
  std::lock_guard lock(mutex_);
  file_.clear();
  cacheValid_ = false;
}

std::filesystem::path Settings::settingsFile() const {
  std::lock_guard lock(mutex_);
  return file_;
}

int32_t Settings::readSettingInt(std::string_view name, int32_t fallback) const {
  std::lock_guard lock(mutex_);
  if (file_.empty()) return fallback;
  const SettingsLine* line = findSetting(contentLocked(), name);
  return line && line->kind == SettingsLine::Kind::Dword ? line->number : fallback;
}

bool Settings::readSettingBool(std::string_view name, bool fallback) const {
  return readSettingInt(name, fallback ? 1 : 0) != 0;
}

std::u16string Settings::readSettingString(std::string_view name, std::u16string_view fallback,
                                           size_t capacity) const {
  std::u16string text;
  {
    std::lock_guard lock(mutex_);
    const SettingsLine* line = file_.empty() ? nullptr : findSetting(contentLocked(), name);
    text = line && line->kind == SettingsLine::Kind::String ? line->text : std::u16string(fallback);
  }
  if (text.size() > capacity) {
    text.resize(capacity);
    // Never leave half of a surrogate pair at the end.
    if (!text.empty() && text.back() >= 0xD800 && text.back() <= 0xDBFF) text.pop_back();
  }
  return text;
}

void Settings::writeSettingInt(std::string_view name, int32_t value) {
  if (!isValidSettingName(name)) return;
  std::lock_guard lock(mutex_);
  writeLineLocked(makeDwordLine(name, value));
}

void Settings::writeSettingBool(std::string_view name, bool value) { writeSettingInt(name, value ? 1 : 0); }

void Settings::writeSettingString(std::string_view name, std::u16string_view text) {
  if (!isValidSettingName(name)) return;
  std::lock_guard lock(mutex_);
  writeLineLocked(makeStringLine(name, text));
}

uint64_t Settings::fileReads() const {
  std::lock_guard lock(mutex_);
  return fileReads_;
}

void Settings::setBeforeReplaceHook(BeforeReplaceHook hook) {
  std::lock_guard lock(mutex_);
  beforeReplace_ = hook;
}

}  // namespace orvel
