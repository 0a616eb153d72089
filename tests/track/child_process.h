#pragma once
// Crash tests run the work to be killed in a fresh copy of this test program (fork, then
// exec), so the child starts with one thread and a clean heap whatever the parent did. The
// program's own main (child_process.cpp) runs the named work instead of the tests when it is
// started as such a child.
#include <sys/types.h>

#include <filesystem>
#include <string>

namespace orvel::test {

// The work of the children, each defined beside the test that starts it. Each works in the
// data folder its parent chose and returns the child's exit code, if it returns at all.
int appendTrackPointsUntilKilled(const std::filesystem::path& folder);
int writeMpsUntilKilled(const std::filesystem::path& folder);
int saveWaypointsIntoReadOnlyFolder(const std::filesystem::path& folder);
int saveWaypointsKilledBeforeReplace(const std::filesystem::path& folder);

// Starts this program doing the work `name` (one of the above, by name) in `folder`, with
// its output discarded. Returns the child's id, or -1.
pid_t startChild(const std::string& name, const std::filesystem::path& folder);

// Runs the work `name` so and waits for it; returns its wait status, or -1.
int runChild(const std::string& name, const std::filesystem::path& folder);

}  // namespace orvel::test
