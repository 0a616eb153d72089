#include "common/torture.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>
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

int killChildTestAtRandom(const std::string& name, const std::filesystem::path& folder, std::mt19937& random,
                          int maxMs, const std::function<bool()>& started) {
  const pid_t child = startChildTest(name, folder);
  if (child <= 0) return -1;
  int status = -1;
  for (int waited = 0; started && !started() && waited < 20000; ++waited) {
    if (::waitpid(child, &status, WNOHANG) == child) return status;  // ended by itself
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  const auto delay = std::uniform_int_distribution<int>(0, maxMs * 1000)(random);
  std::this_thread::sleep_for(std::chrono::microseconds(delay));
  ::kill(child, SIGKILL);
  return ::waitpid(child, &status, 0) == child ? status : -1;
}

bool inChildTest() {
  const char* marker = std::getenv("ORVEL_CHILD_TEST");
  return marker && *marker == '1';
}

std::filesystem::path childFolder() {
  const char* folder = std::getenv("ORVEL_CHILD_FOLDER");
  return folder ? folder : "";
}

int tortureCount(int shortForm, int longForm) {
  const char* form = std::getenv("ORVEL_TORTURE");
  return form && std::string(form) == "long" ? longForm : shortForm;
}

ProgressCounter::ProgressCounter(const std::filesystem::path& path) {
  const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
  if (fd < 0) return;
  if (::ftruncate(fd, sizeof(uint64_t)) == 0) {
    void* mapped = ::mmap(nullptr, sizeof(uint64_t), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    if (mapped != MAP_FAILED) word_ = static_cast<uint64_t*>(mapped);
  }
  ::close(fd);
}

ProgressCounter::~ProgressCounter() {
  if (word_) ::munmap(word_, sizeof(uint64_t));
}

void ProgressCounter::set(uint64_t value) {
  // After the step it counts: the compiler may not move the step's stores below this one.
  if (word_) std::atomic_ref<uint64_t>(*word_).store(value, std::memory_order_release);
}

uint64_t ProgressCounter::get() const {
  return word_ ? std::atomic_ref<uint64_t>(*word_).load(std::memory_order_acquire) : 0;
}

void reportTorture(const std::string& figures) {
  if (::testing::Test::HasFailure()) return;
  std::printf("[ torture  ] %s\n", figures.c_str());
  std::fflush(stdout);  // before any fork copies the buffer
}

ProcessResources processResources() {
  ProcessResources found;
  std::error_code error;
  for (auto it = std::filesystem::directory_iterator("/proc/self/task", error);
       !error && it != std::filesystem::directory_iterator(); it.increment(error)) {
    found.threads.insert(it->path().filename().string());
  }
  std::vector<std::filesystem::path> descriptors;
  for (auto it = std::filesystem::directory_iterator("/proc/self/fd", error);
       !error && it != std::filesystem::directory_iterator(); it.increment(error)) {
    descriptors.push_back(it->path());
  }
  // Read after the listing: the listing's own descriptor is closed by then and left out.
  for (const auto& path : descriptors) {
    const auto target = std::filesystem::read_symlink(path, error);
    if (!error) found.descriptors.insert(path.filename().string() + " -> " + target.string());
  }
  return found;
}

std::string leftBehind(const ProcessResources& before, const ProcessResources& after) {
  std::string extra;
  for (const auto& thread : after.threads) {
    if (!before.threads.count(thread)) extra += "thread " + thread + "\n";
  }
  for (const auto& descriptor : after.descriptors) {
    if (!before.descriptors.count(descriptor)) extra += "descriptor " + descriptor + "\n";
  }
  return extra;
}

}  // namespace orvel::test
