// Where the store lives, and how it survives damage, crashes and concurrent writers.
#include <csignal>
#include <optional>
#include <sys/wait.h>
#include <unistd.h>

#include "core/atomic_file.h"
#include "settings_fixture.h"

namespace orvel::test {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

// Sets (or unsets, with null) an environment variable for the life of the object.
class ScopedEnv {
 public:
  ScopedEnv(const char* name, const char* value) : name_(name) {
    if (const char* old = std::getenv(name)) old_ = old;
    if (value) ::setenv(name, value, 1); else ::unsetenv(name);
  }
  ~ScopedEnv() {
    if (old_) ::setenv(name_, old_->c_str(), 1); else ::unsetenv(name_);
  }

 private:
  const char* name_;
  std::optional<std::string> old_;
};

std::vector<fs::path> leftovers(const fs::path& dir, const fs::path& keep) {
  std::vector<fs::path> found;
  for (const auto& entry : fs::directory_iterator(dir)) {
    if (entry.path() != keep) found.push_back(entry.path());
  }
  return found;
}

// The file lives in $XDG_CONFIG_HOME when that is absolute, else in $HOME/.config; with
// neither there is no file and the program runs on defaults.
TEST(SettingsPlace, FollowsXdgThenHomeElseNone) {
  Settings settings;
  const fs::path dir = scratchDir("settings-place");
  ScopedEnv config("ORVEL_CONFIG_FILE", nullptr);
  {
    ScopedEnv xdg("XDG_CONFIG_HOME", (dir / "xdg").c_str());
    EXPECT_EQ(settings.openSettings(), 0);
    EXPECT_EQ(settings.settingsFile(), dir / "xdg" / "Orvel" / "GisOrvel.conf");
  }
  ScopedEnv xdg("XDG_CONFIG_HOME", "relative/path");
  {
    ScopedEnv home("HOME", (dir / "home").c_str());
    EXPECT_EQ(settings.openSettings(), 0);
    EXPECT_EQ(settings.settingsFile(), dir / "home" / ".config" / "Orvel" / "GisOrvel.conf");
  }
  ScopedEnv home("HOME", "");
  EXPECT_NE(settings.openSettings(), 0);
  EXPECT_TRUE(settings.settingsFile().empty());
  settings.writeSettingInt("Page", 2);
  EXPECT_EQ(settings.readSettingInt("Page", 0), 0);
}

TEST_F(SettingsStore, DamagedFileKeepsWhatCanBeReadAndIsKeptAside) {
  const std::string damaged =
      "RotateMap dword 1\n"
      "\x01\x02\x00\xFE\xFF junk\n"s
      "Gauge_2 string Высота\n"
      "KeepVisible dword 12x\n"
      "Gauge_3 string \xFF\xFE\n"
      "RotateMap dword 0\n";
  store(damaged);
  EXPECT_TRUE(readSettingBool("RotateMap", false));
  EXPECT_EQ(readSettingString("Gauge_2", u"vspeed"), u"Высота");
  EXPECT_TRUE(readSettingBool("KeepVisible", true));
  EXPECT_EQ(readSettingString("Gauge_3", u"elev"), u"elev");
  EXPECT_FALSE(fs::exists(badCopy()));  // reading changes nothing

  writeSettingInt("Page", 1);
  EXPECT_EQ(readText(badCopy()), damaged);
  EXPECT_EQ(stored(), "RotateMap dword 1\nGauge_2 string Высота\nPage dword 1\n");

  writeSettingInt("Page", 2);  // the file is sound again: the copy stays as it was
  EXPECT_EQ(readText(badCopy()), damaged);
  EXPECT_EQ(leftovers(file_.parent_path(), file_), std::vector<fs::path>{badCopy()});
}

TEST_F(SettingsStore, CrashBeforeReplaceLeavesPreviousFile) {
  writeSettingInt("Page", 2);
  writeSettingString("Gauge_0", u"elev");
  const std::string before = stored();

  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    settings_.setBeforeReplaceHook([](const fs::path&) { ::raise(SIGKILL); });
    writeSettingInt("Page", 1);
    ::_exit(0);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);

  EXPECT_EQ(stored(), before);
  EXPECT_EQ(readSettingInt("Page", 0), 2);
  const auto stray = leftovers(file_.parent_path(), file_);
  ASSERT_EQ(stray.size(), 1u);
  EXPECT_EQ(readText(stray[0]), "Page dword 1\nGauge_0 string elev\n");

  writeSettingBool("RotateMap", true);  // the next write goes ahead as usual
  EXPECT_EQ(readSettingInt("Page", 0), 2);
  EXPECT_TRUE(readSettingBool("RotateMap", false));
}

}  // namespace
}  // namespace orvel::test
