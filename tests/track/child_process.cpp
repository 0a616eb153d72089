#include "child_process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string_view>
#include <vector>

namespace orvel::test {

pid_t startChild(const std::string& name, const std::filesystem::path& folder) {
  // Everything the child needs is built before the fork: after it only exec-safe calls.
  std::string program = "/proc/self/exe";
  std::string flag = "--child";
  std::string work = name;
  std::string where = folder.string();
  std::vector<char*> argv{program.data(), flag.data(), work.data(), where.data(), nullptr};
  const pid_t child = ::fork();
  if (child != 0) return child;
  const int null = ::open("/dev/null", O_WRONLY);
  if (null >= 0) {
    ::dup2(null, 1);
    ::dup2(null, 2);
  }
  ::execv(argv[0], argv.data());
  ::_exit(127);
}

int runChild(const std::string& name, const std::filesystem::path& folder) {
  const pid_t child = startChild(name, folder);
  int status = -1;
  if (child <= 0 || ::waitpid(child, &status, 0) != child) return -1;
  return status;
}

}  // namespace orvel::test

// The tests, or with "--child NAME FOLDER" the work of a child.
int main(int argc, char** argv) {
  using namespace orvel::test;
  if (argc == 4 && std::string_view(argv[1]) == "--child") {
    const struct {
      std::string_view name;
      int (*work)(const std::filesystem::path&);
    } works[] = {
        {"appendTrackPointsUntilKilled", appendTrackPointsUntilKilled},
        {"writeMpsUntilKilled", writeMpsUntilKilled},
        {"saveWaypointsIntoReadOnlyFolder", saveWaypointsIntoReadOnlyFolder},
        {"saveWaypointsKilledBeforeReplace", saveWaypointsKilledBeforeReplace},
    };
    for (const auto& child : works) {
      if (child.name == argv[2]) return child.work(argv[3]);
    }
    return 127;
  }
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
