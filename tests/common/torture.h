#pragma once
// Tests that kill for real. The work to be killed runs in a fresh copy of the test program
// (fork, then exec with "--child NAME FOLDER"), so the child starts with one thread and a
// clean heap whatever the parent did. A test program with children names its works in its
// own main, which calls childMain. A child counts the steps it completed in FOLDER/progress
// (a ProgressCounter both map). Each torture test has a short form, run by the suite, and a
// long form, run by scripts/torture (which sets ORVEL_TORTURE=long).
#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <set>
#include <span>
#include <string>
#include <string_view>

namespace orvel::test {

// One piece of work for a child, in the data folder its parent chose; returns the child's
// exit code, if it returns at all.
struct ChildWork {
  std::string_view name;
  int (*work)(const std::filesystem::path& folder);
};

// The main of a test program with children: with "--child NAME FOLDER" the work NAME (exit
// code 127 when there is none), otherwise the tests.
int childMain(int argc, char** argv, std::span<const ChildWork> works);

// Starts this program doing the work `name` in `folder`, with its output discarded. Returns
// the child's id, or -1.
pid_t startChild(const std::string& name, const std::filesystem::path& folder);
// Runs the work `name` so and waits for it; returns its wait status, or -1.
int runChild(const std::string& name, const std::filesystem::path& folder);

// `shortForm` in the suite, `longForm` under scripts/torture.
int tortureCount(int shortForm, int longForm);

// The torture's loop, tortureCount(10, 100) times: the work `name` started in `folder` and
// killed with SIGKILL at a random moment up to `maxMs` milliseconds after the child counted
// `firstSteps` steps in the first trial and one step in the others, except every fourth trial
// after the first, whose kill may fall anywhere from the program's start on. After each kill,
// which must be the one that ended the child, check(counted) with the steps it counted. Stops
// at the first fatal failure; returns the number of trials.
int killAtRandom(const std::string& name, const std::filesystem::path& folder, int maxMs,
                 const std::function<void(uint64_t counted)>& check, uint64_t firstSteps = 1);

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
