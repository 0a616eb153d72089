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
#include <random>
#include <string_view>
#include <thread>
#include <vector>

#include "common/test_main.h"

namespace orvel::test {

pid_t startChild(const std::string& name, const std::filesystem::path& folder) {
  // Everything the child needs is built before the fork: after it only exec-safe calls.
  std::string program = "/proc/self/exe", flag = "--child", work = name, where = folder.string();
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

int childMain(int argc, char** argv, std::span<const ChildWork> works) {
  if (argc == 4 && std::string_view(argv[1]) == "--child") {
    for (const ChildWork& child : works) {
      if (child.name == argv[2]) return child.work(argv[3]);
    }
    return 127;
  }
  return runTests(argc, argv);
}

int killAtRandom(const std::string& name, const std::filesystem::path& folder, int maxMs,
                 const std::function<void(uint64_t counted)>& check, uint64_t firstSteps) {
  std::mt19937 random(std::random_device{}());
  ProgressCounter progress(folder / "progress");
  const int trials = tortureCount(10, 100);
  for (int trial = 0; trial < trials && !::testing::Test::HasFatalFailure(); ++trial) {
    SCOPED_TRACE("trial " + std::to_string(trial));
    progress.set(0);
    const pid_t child = startChild(name, folder);
    if (child <= 0) {
      ADD_FAILURE() << "cannot start " << name;
      break;
    }
    // The clock starts once the child has done its first steps (at most a minute), so that
    // most kills fall into the work rather than into the program's start.
    const uint64_t steps = trial == 0 ? firstSteps : trial % 4 == 0 ? 0 : 1;
    int status = -1;
    bool ended = false;
    for (int waited = 0; !ended && progress.get() < steps && waited < 60000; ++waited) {
      ended = ::waitpid(child, &status, WNOHANG) == child;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    if (!ended) {
      std::this_thread::sleep_for(std::chrono::microseconds(std::uniform_int_distribution<int>(0, maxMs * 1000)(random)));
      ::kill(child, SIGKILL);
      if (::waitpid(child, &status, 0) != child) status = -1;
    }
    if (!WIFSIGNALED(status) || WTERMSIG(status) != SIGKILL) {
      ADD_FAILURE() << name << " ended by itself: " << status;
      break;
    }
    check(progress.get());
  }
  return trials;
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
