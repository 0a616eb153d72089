// The track tests, or with "--child NAME FOLDER" the work of a child that a test kills or
// watches; each work is defined beside the test that starts it.
#include "common/torture.h"

namespace orvel::test {
int appendTrackPointsUntilKilled(const std::filesystem::path& folder);
int recordRunUntilKilled(const std::filesystem::path& folder);
int saveWaypointsUntilKilled(const std::filesystem::path& folder);
int saveWaypointsIntoReadOnlyFolder(const std::filesystem::path& folder);
}  // namespace orvel::test

int main(int argc, char** argv) {
  using namespace orvel::test;
  const ChildWork works[] = {
      {"appendTrackPointsUntilKilled", appendTrackPointsUntilKilled},
      {"recordRunUntilKilled", recordRunUntilKilled},
      {"saveWaypointsUntilKilled", saveWaypointsUntilKilled},
      {"saveWaypointsIntoReadOnlyFolder", saveWaypointsIntoReadOnlyFolder},
  };
  return childMain(argc, argv, works);
}
