#include "core/atomic_file.h"

#include "settings_fixture.h"

namespace orvel::test {
namespace {

namespace fs = std::filesystem;

size_t entries(const fs::path& dir) {
  return static_cast<size_t>(std::distance(fs::directory_iterator(dir), fs::directory_iterator{}));
}

TEST(AtomicFile, CreatesAndReplaces) {
  const fs::path dir = scratchDir("atomic-replace");
  const fs::path target = dir / "waypoints.txt";
  ASSERT_TRUE(writeFileAtomically(target, "first"));
  EXPECT_EQ(readText(target), "first");
  ASSERT_TRUE(writeFileAtomically(target, std::string(100000, 'x')));
  EXPECT_EQ(readText(target), std::string(100000, 'x'));
  ASSERT_TRUE(writeFileAtomically(target, ""));
  EXPECT_EQ(readText(target), "");
  EXPECT_EQ(entries(dir), 1u);
}

TEST(AtomicFile, FailureLeavesTargetAndNoTemporary) {
  const fs::path dir = scratchDir("atomic-fail");
  fs::create_directories(dir / "occupied" / "child");
  EXPECT_FALSE(writeFileAtomically(dir / "occupied", "bytes"));  // a folder cannot be replaced
  EXPECT_TRUE(fs::is_directory(dir / "occupied" / "child"));
  EXPECT_FALSE(writeFileAtomically(dir / "missing" / "file", "bytes"));
  EXPECT_EQ(entries(dir), 1u);
}

}  // namespace
}  // namespace orvel::test
