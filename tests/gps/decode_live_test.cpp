// orvel-tool decode on a live device: the built tool reads a pseudo-terminal with a
// recorded receiver behind it, as the viewer would, until its time is up.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdio>
#include <string>

#include "common/test_data.h"
#include "pty_support.h"

namespace orvel {
namespace {

struct ToolRun {
  int exitCode = -1;
  std::string out;
};

ToolRun runTool(const std::string& arguments) {
  ToolRun run;
  const std::string command = std::string(ORVEL_TOOL_PATH) + " " + arguments + " 2>/dev/null";
  FILE* pipe = ::popen(command.c_str(), "r");
  if (!pipe) return run;
  char chunk[4096];
  size_t got = 0;
  while ((got = std::fread(chunk, 1, sizeof chunk, pipe)) > 0) run.out.append(chunk, got);
  const int status = ::pclose(pipe);
  run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return run;
}

TEST(DecodeLive, ReadsAReceiverOnADeviceUntilItsTimeIsUp) {
  const auto path = test::dataFile("gps/nmea/bu353s4.log");
  if (path.empty()) GTEST_SKIP() << "no capture";
  test::PtyPair pty;
  ASSERT_TRUE(pty.ok());
  test::ReceiverThread receiver(pty.master(), test::readFile(path), 150);
  const ToolRun run = runTool("decode --protocol nmea --seconds 1.5 " + pty.slavePath());
  EXPECT_EQ(run.exitCode, 0) << run.out;
  // The BU-353S4's own sentences: 3747.087x S, 17518.89xx E on 2014-12-31.
  EXPECT_NE(run.out.find("time=2014-12-31T03:07:"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("lat=-37.7847"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("lon=175.314"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("sats: 17/72/207/"), std::string::npos) << run.out;
}

TEST(DecodeLive, SilenceOrAMissingDeviceFails) {
  test::PtyPair quiet;
  ASSERT_TRUE(quiet.ok());
  EXPECT_EQ(runTool("decode --seconds 0.5 " + quiet.slavePath()).exitCode, 1);
  EXPECT_EQ(runTool("decode --seconds 0 " + quiet.slavePath()).exitCode, 2);
  EXPECT_EQ(runTool("decode --seconds 1 /dev/null").exitCode, 1) << "not a terminal";
}

}  // namespace
}  // namespace orvel
