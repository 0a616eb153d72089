// The core tests, or with "--child NAME FOLDER" the work of a child that a test kills; each
// work is defined beside the test that starts it.
#include "common/torture.h"

namespace orvel::test {
int writeSettingsUntilKilled(const std::filesystem::path& folder);
int writeSettingsKilledBeforeReplace(const std::filesystem::path& folder);
}  // namespace orvel::test

int main(int argc, char** argv) {
  using namespace orvel::test;
  const ChildWork works[] = {
      {"writeSettingsUntilKilled", writeSettingsUntilKilled},
      {"writeSettingsKilledBeforeReplace", writeSettingsKilledBeforeReplace},
  };
  return childMain(argc, argv, works);
}
