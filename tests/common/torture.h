#pragma once
// What the crash and torture tests share. The work to be killed runs in a fresh copy of the
// test program (fork, then exec), so the child starts with one thread and a clean heap
// whatever the parent did; the child tells how far it got through a progress counter in a
// file both map. Each torture test has a short form, run by the suite, and a long form, run
// by scripts/torture (which sets ORVEL_TORTURE=long).
#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <random>
#include <set>
#include <string>

namespace orvel::test {

// Starts this program running only the test `name` ("Suite.DISABLED_Test") on the data
// folder `folder`, with its output discarded and ORVEL_CHILD_TEST=1 in its environment.
// Returns the child's id, or -1.
pid_t startChildTest(const std::string& name, const std::filesystem::path& folder);

// Runs the test `name` so and waits for it; returns its wait status, or -1.
int runChildTest(const std::string& name, const std::filesystem::path& folder);

// Runs the test `name` so, kills it with SIGKILL after a random time of up to `maxMs`
// milliseconds and waits for it; returns its wait status, or -1. With `started`, the time
// counts from when started() first says true (asked every millisecond for up to 20 s), so
// that the kill falls into the work rather than into the program's start.
int killChildTestAtRandom(const std::string& name, const std::filesystem::path& folder, std::mt19937& random,
                          int maxMs, const std::function<bool()>& started = {});

// True inside such a child: child-only tests skip themselves otherwise.
bool inChildTest();
// The data folder the parent gave the child.
std::filesystem::path childFolder();

// `shortForm` in the suite, `longForm` under scripts/torture.
int tortureCount(int shortForm, int longForm);

// One 64-bit count in the file `path` (created as needed), mapped by the child that sets it
// after every step it completed and by the parent that reads it after the kill.
class ProgressCounter {
 public:
  explicit ProgressCounter(const std::filesystem::path& path);
  ~ProgressCounter();
  ProgressCounter(const ProgressCounter&) = delete;
  ProgressCounter& operator=(const ProgressCounter&) = delete;
  void set(uint64_t value);
  uint64_t get() const;

 private:
  uint64_t* word_ = nullptr;
};

// Prints one line of the torture's figures ("[ torture  ] ...") for scripts/torture, unless
// the test has failed.
void reportTorture(const std::string& figures);

// The threads (by id) and open descriptors (number and what is open) of this process, from
// /proc/self/task and /proc/self/fd.
struct ProcessResources {
  std::set<std::string> threads;
  std::set<std::string> descriptors;
};
ProcessResources processResources();
// What `after` holds that `before` did not, one per line; empty when nothing was left
// behind. (A thread of glibc's name resolver may linger for a second after a lookup and be
// gone by `after`: only what is new counts.)
std::string leftBehind(const ProcessResources& before, const ProcessResources& after);

}  // namespace orvel::test
