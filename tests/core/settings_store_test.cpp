// Where the store lives, and how it survives damage, crashes and concurrent writers.
#include <sys/wait.h>

#include <algorithm>
#include <csignal>
#include <optional>
#include <thread>

#include "common/torture.h"
#include "core/settings_file.h"
#include "core/utf.h"
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
  ~ScopedEnv() { old_ ? ::setenv(name_, old_->c_str(), 1) : ::unsetenv(name_); }

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
  const int status = runChild("writeSettingsKilledBeforeReplace", dir_);
  ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
  EXPECT_EQ(stored(), before);
  EXPECT_EQ(readSettingInt("Page", 0), 2);
  const auto stray = leftovers(file_.parent_path(), file_);
  ASSERT_EQ(stray.size(), 1u);  // the finished temporary is all the crash leaves
  EXPECT_EQ(readText(stray[0]), "Page dword 1\nGauge_0 string elev\n");
  writeSettingBool("RotateMap", true);  // the next write goes ahead as usual and takes it away
  EXPECT_EQ(readSettingInt("Page", 0), 2);
  EXPECT_TRUE(readSettingBool("RotateMap", false));
  EXPECT_EQ(leftovers(file_.parent_path(), file_), std::vector<fs::path>{});
}

// Writes killed at random moments, again and again: the file is always whole and readable
// (never damaged, no .bad copy), holds the last step written or the one being written, and
// every gauge text the latest of its own; the next start carries on from there.
TEST(SettingsTorture, WritesKilledAtRandomLeaveTheOldOrTheNewFile) {
  const fs::path dir = scratchDir("settings-torture");
  const fs::path file = dir / "GisOrvel.conf";
  int64_t newest = 0;
  const auto stepText = [](int64_t step) { return u"step " + *utf8ToUtf16(std::to_string(step)); };
  const int trials = killAtRandom("writeSettingsUntilKilled", dir, 30, [&](uint64_t counted) {
    const SettingsContent content = parseSettings(readText(file));
    ASSERT_FALSE(content.damaged);
    ASSERT_FALSE(fs::exists(fs::path(file) += ".bad"));
    EXPECT_LE(leftovers(dir, file).size(), 2u);  // the progress count, and the killed write's temporary at most
    const SettingsLine* stepLine = findSetting(content, "Step");
    if (!stepLine) {  // killed before the first write ever ended
      ASSERT_EQ(newest, 0);
      return;
    }
    const int64_t step = stepLine->number;
    // The step in hand: the one after the last counted, or the one found on disk.
    const int64_t inHand = counted > 0 ? static_cast<int64_t>(counted) : newest;
    ASSERT_TRUE(step == inHand || step + 1 == inHand) << step << " after " << counted << " steps";
    for (int64_t latest = std::max<int64_t>(0, step - 9); latest <= step; ++latest) {
      const SettingsLine* text = findSetting(content, "Gauge_" + std::to_string(latest % 10));
      // The step in hand may not have reached its second write.
      if (latest == inHand && (!text || text->text != stepText(latest))) {
        if (latest >= 10) {
          ASSERT_TRUE(text && text->text == stepText(latest - 10)) << latest;
        }
        continue;
      }
      ASSERT_TRUE(text && text->text == stepText(latest)) << latest;
    }
    newest = step;
  });
  reportTorture("settings: " + std::to_string(trials) + " kills while writing, " + std::to_string(newest + 1) +
                " steps of two writes, every file whole");
}

TEST_F(SettingsStore, ConcurrentWritersLoseNothing) {
  constexpr int kEach = 40;
  auto writer = [this](const char* prefix) {
    for (int i = 0; i < kEach; ++i) {
      writeSettingInt(std::string(prefix) + std::to_string(i), i);
      readSettingBool("ShowTrack", true);
    }
  };
  std::thread first(writer, "Enable_COM");
  std::thread second(writer, "Gauge_");
  first.join();
  second.join();
  for (int i = 0; i < kEach; ++i) {
    EXPECT_EQ(readSettingInt("Enable_COM" + std::to_string(i), -1), i);
    EXPECT_EQ(readSettingInt("Gauge_" + std::to_string(i), -1), i);
  }
  EXPECT_EQ(leftovers(file_.parent_path(), file_), std::vector<fs::path>{});
}

// Reads cost a check of the file, not a read of it, until the file changes; then the change
// made outside the program is what the next read gives.
TEST_F(SettingsStore, ReadsFollowOutsideChangesWithoutRereadingAnUnchangedFile) {
  writeSettingInt("Page", 2);
  EXPECT_EQ(readSettingInt("Page", 0), 2);
  const uint64_t reads = settings_.fileReads();
  for (int i = 0; i < 100; ++i) EXPECT_EQ(readSettingInt("Page", 0), 2);
  EXPECT_EQ(settings_.fileReads(), reads);
  const std::pair<const char*, int32_t> outside[] = {
      {"Page dword 1\n", 1}, {"Page dword 0\n", 0}, {"Page string 0\n", 5}};
  for (const auto& [text, expected] : outside) {
    store(text);  // rewritten in place: same file, often the same size
    EXPECT_EQ(readSettingInt("Page", 5), expected) << text;
  }
  std::filesystem::remove(file_);
  EXPECT_EQ(readSettingInt("Page", 7), 7);
}

}  // namespace

// Carries on with the step on disk (done again, since its second write may be missing),
// writing step after step until it is killed, and counts every step done. Step s writes
// "Step" s, then "Gauge_<s mod 10>" "step s".
int writeSettingsUntilKilled(const std::filesystem::path& folder) {
  Settings settings;
  settings.openSettingsAt(folder / "GisOrvel.conf");
  ProgressCounter progress(folder / "progress");
  for (int32_t step = std::max(settings.readSettingInt("Step", 0), 0);; ++step) {
    settings.writeSettingInt("Step", step);
    settings.writeSettingString("Gauge_" + std::to_string(step % 10), u"step " + *utf8ToUtf16(std::to_string(step)));
    progress.set(static_cast<uint64_t>(step) + 1);
  }
}

// The store of the test above, written once more and killed just before the replacement.
int writeSettingsKilledBeforeReplace(const std::filesystem::path& folder) {
  Settings settings;
  settings.openSettingsAt(folder / "Orvel" / "GisOrvel.conf");
  settings.setBeforeReplaceHook([](const std::filesystem::path&) { ::raise(SIGKILL); });
  settings.writeSettingInt("Page", 1);
  return 0;
}

}  // namespace orvel::test
