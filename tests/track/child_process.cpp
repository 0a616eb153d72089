#include "child_process.h"

#include <cstdlib>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace orvel::test {

pid_t startChildTest(const std::string& name, const std::filesystem::path& folder) {
  // Everything the child needs is built before the fork: after it only exec-safe calls.
  std::string filter = "--gtest_filter=" + name;
  std::string disabled = "--gtest_also_run_disabled_tests";
  std::string program = "/proc/self/exe";
  std::vector<char*> argv{program.data(), filter.data(), disabled.data(), nullptr};
  std::string marker = "ORVEL_CHILD_TEST=1";
  std::string folderVariable = "ORVEL_CHILD_FOLDER=" + folder.string();
  std::vector<char*> envp;
  for (char** e = environ; *e; ++e) envp.push_back(*e);
  envp.push_back(marker.data());
  envp.push_back(folderVariable.data());
  envp.push_back(nullptr);

  const pid_t child = ::fork();
  if (child != 0) return child;
  const int null = ::open("/dev/null", O_WRONLY);
  if (null >= 0) {
    ::dup2(null, 1);
    ::dup2(null, 2);
  }
  ::execve(argv[0], argv.data(), envp.data());
  ::_exit(127);
}

int runChildTest(const std::string& name, const std::filesystem::path& folder) {
  const pid_t child = startChildTest(name, folder);
  int status = -1;
  if (child <= 0 || ::waitpid(child, &status, 0) != child) return -1;
  return status;
}

bool inChildTest() {
  const char* marker = std::getenv("ORVEL_CHILD_TEST");
  return marker && *marker == '1';
}

std::filesystem::path childFolder() {
  const char* folder = std::getenv("ORVEL_CHILD_FOLDER");
  return folder ? folder : "";
}

}  // namespace orvel::test
