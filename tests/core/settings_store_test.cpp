// Where the store lives, and how it survives damage, crashes and concurrent writers.
#include <algorithm>
#include <csignal>
#include <functional>
#include <optional>
#include <random>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "common/torture.h"
#include "core/atomic_file.h"
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

TEST(SettingsPlace, ConfigFileVariableWins) {
  Settings settings;
  const fs::path dir = scratchDir("settings-place-env");
  const fs::path file = dir / "nested" / "my.conf";
  ScopedEnv config("ORVEL_CONFIG_FILE", file.c_str());
  ScopedEnv xdg("XDG_CONFIG_HOME", dir.c_str());
  EXPECT_EQ(settings.openSettings(), 0);
  EXPECT_EQ(settings.settingsFile(), file);
  EXPECT_TRUE(fs::is_directory(dir / "nested"));
  settings.closeSettings();
}

TEST(SettingsPlace, FollowsXdgThenHome) {
  Settings settings;
  const fs::path dir = scratchDir("settings-place-xdg");
  ScopedEnv config("ORVEL_CONFIG_FILE", nullptr);
  {
    ScopedEnv xdg("XDG_CONFIG_HOME", (dir / "xdg").c_str());
    EXPECT_EQ(settings.openSettings(), 0);
    EXPECT_EQ(settings.settingsFile(), dir / "xdg" / "Orvel" / "GisOrvel.conf");
    EXPECT_TRUE(fs::is_directory(dir / "xdg" / "Orvel"));
  }
  for (const char* xdgValue : {static_cast<const char*>(nullptr), "", "relative/path"}) {
    ScopedEnv xdg("XDG_CONFIG_HOME", xdgValue);
    ScopedEnv home("HOME", (dir / "home").c_str());
    EXPECT_EQ(settings.openSettings(), 0);
    EXPECT_EQ(settings.settingsFile(), dir / "home" / ".config" / "Orvel" / "GisOrvel.conf");
  }
  settings.closeSettings();
}

TEST(SettingsPlace, UnusableStoreRunsOnDefaults) {
  Settings settings;
  const fs::path dir = scratchDir("settings-unusable");
  writeText(dir / "plain", "a regular file, not a folder\n");
  const fs::path file = dir / "plain" / "Orvel" / "GisOrvel.conf";
  ScopedEnv config("ORVEL_CONFIG_FILE", file.c_str());
  EXPECT_NE(settings.openSettings(), 0);
  EXPECT_TRUE(settings.settingsFile().empty());

  settings.writeSettingInt("Page", 2);
  settings.writeSettingBool("ShowTrack", false);
  settings.writeSettingString("Gauge_0", u"elev");
  EXPECT_EQ(settings.readSettingInt("Page", 0), 0);
  EXPECT_TRUE(settings.readSettingBool("ShowTrack", true));
  EXPECT_TRUE(settings.readSettingBool("ShowWaypoints", true));
  EXPECT_TRUE(settings.readSettingBool("ScanCOMPorts", true));
  EXPECT_TRUE(settings.readSettingBool("Enable_COM19", true));
  EXPECT_EQ(settings.readSettingString("Gauge_0", u"speed", 32), u"speed");
  EXPECT_EQ(readText(dir / "plain"), "a regular file, not a folder\n");
}

TEST_F(SettingsStore, ClosedStoreReadsDefaultsAndWritesNothing) {
  writeSettingInt("Page", 2);
  closeSettings();
  EXPECT_EQ(readSettingInt("Page", 0), 0);
  writeSettingInt("Page", 1);
  EXPECT_EQ(stored(), "Page dword 2\n");
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

TEST_F(SettingsStore, OversizedFileReadsAsDefaults) {
  std::string huge;
  while (huge.size() <= (1u << 20)) huge += "Page dword 1\n";
  store(huge);
  EXPECT_EQ(readSettingInt("Page", 0), 0);
  writeSettingBool("ShowTrack", false);
  EXPECT_EQ(readText(badCopy()).size(), huge.size());
  EXPECT_EQ(stored(), "ShowTrack dword 0\n");
}

TEST_F(SettingsStore, BinaryJunkReadsAsDefaults) {
  std::string junk(4096, '\0');
  for (size_t i = 0; i < junk.size(); ++i) junk[i] = static_cast<char>((i * 2654435761u) >> 13);
  store(junk);
  EXPECT_EQ(readSettingInt("Page", 0), 0);
  EXPECT_EQ(readSettingString("Gauge_0", u"speed"), u"speed");
  writeSettingInt("Page", 1);
  EXPECT_EQ(readText(badCopy()), junk);
  EXPECT_EQ(readSettingInt("Page", 0), 1);
}

TEST_F(SettingsStore, FolderInPlaceOfTheFileReadsAsDefaults) {
  fs::create_directories(file_ / "inside");
  EXPECT_EQ(readSettingInt("Page", 3), 3);
  writeSettingInt("Page", 1);  // nothing can be kept aside, so nothing is replaced
  EXPECT_TRUE(fs::is_directory(file_ / "inside"));
  EXPECT_EQ(readSettingInt("Page", 3), 3);
}

TEST_F(SettingsStore, StrayTemporaryFileIsHarmless) {
  writeSettingInt("Page", 2);
  const fs::path stray = fs::path(file_) += ".tmp-1-0";
  writeText(stray, "Page dwo");
  EXPECT_EQ(readSettingInt("Page", 0), 2);
  writeSettingInt("Page", 1);
  EXPECT_EQ(readSettingInt("Page", 0), 1);
  EXPECT_EQ(readText(stray), "Page dwo");
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

// Run in a child by the next test: carries on with the step on disk (done again, since its
// second write may be missing), writing step after step until it is killed, and counts every
// step done. Step s writes "Step" s, then "Gauge_<s mod 10>" "step s".
TEST(SettingsTorture, DISABLED_WriteUntilKilled) {
  ASSERT_TRUE(inChildTest()) << "started by the test after it";
  Settings settings;
  settings.openSettingsAt(childFolder() / "GisOrvel.conf");
  ProgressCounter progress(childFolder() / "progress");
  for (int32_t step = std::max(settings.readSettingInt("Step", 0), 0);; ++step) {
    settings.writeSettingInt("Step", step);
    settings.writeSettingString("Gauge_" + std::to_string(step % 10), u"step " + *utf8ToUtf16(std::to_string(step)));
    progress.set(static_cast<uint64_t>(step) + 1);
  }
}

// Writes killed at random moments, again and again: the file is always whole and readable
// (never damaged, no .bad copy), holds the last step written or the one being written, and
// every gauge text the latest of its own; the next start carries on from there.
TEST(SettingsTorture, WritesKilledAtRandomLeaveTheOldOrTheNewFile) {
  const fs::path dir = scratchDir("settings-torture");
  const fs::path file = dir / "GisOrvel.conf";
  std::mt19937 random(std::random_device{}());
  ProgressCounter progress(dir / "progress");
  int64_t newest = 0;
  const auto stepText = [](int64_t step) { return u"step " + *utf8ToUtf16(std::to_string(step)); };
  const int trials = tortureCount(10, 100);
  for (int trial = 0; trial < trials; ++trial) {
    SCOPED_TRACE("trial " + std::to_string(trial));
    progress.set(0);
    std::function<bool()> writing;
    if (trial % 4 != 0) writing = [&] { return progress.get() > 0; };
    const int status = killChildTestAtRandom("SettingsTorture.DISABLED_WriteUntilKilled", dir, random, 30, writing);
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
    const SettingsContent content = parseSettings(readText(file));
    ASSERT_FALSE(content.damaged);
    ASSERT_FALSE(fs::exists(fs::path(file) += ".bad"));
    EXPECT_LE(leftovers(dir, file).size(), 2u);  // the progress count, and the killed write's temporary at most
    const SettingsLine* stepLine = findSetting(content, "Step");
    if (!stepLine) {  // killed before the first write ever ended
      ASSERT_EQ(newest, 0);
      continue;
    }
    const int64_t step = stepLine->number;
    const auto counted = static_cast<int64_t>(progress.get());
    // The step in hand: the one after the last counted, or the one found on disk.
    const int64_t inHand = counted > 0 ? counted : newest;
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
  }
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
}  // namespace orvel::test
