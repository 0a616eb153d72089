#pragma once
// Crash tests run the work to be killed in a fresh copy of this test program (fork, then
// exec), so the child starts with one thread and a clean heap whatever the parent did.
#include <filesystem>
#include <string>
#include <sys/types.h>

namespace orvel::test {

// Starts this program running only the test `name` ("Suite.DISABLED_Test") on the data
// folder `folder`, with its output discarded and ORVEL_CHILD_TEST=1 in its environment.
// Returns the child's id, or -1.
pid_t startChildTest(const std::string& name, const std::filesystem::path& folder);

// Runs the test `name` so and waits for it; returns its wait status, or -1.
int runChildTest(const std::string& name, const std::filesystem::path& folder);

// True inside such a child: child-only tests skip themselves otherwise.
bool inChildTest();
// The data folder the parent gave the child.
std::filesystem::path childFolder();

}  // namespace orvel::test
