// orvel-tool decode on a live device: the built tool reads a pseudo-terminal with a
// recorded receiver behind it, as the viewer would, until its time is up.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdio>
#include <string>

#include "common/test_data.h"
#include "common/tool_run.h"
#include "pty_support.h"

namespace orvel {
namespace {

test::ToolRun runTool(const std::string& args) { return test::runProgram(ORVEL_TOOL_PATH, args); }

TEST(DecodeLive, ReadsAReceiverOnADeviceUntilItsTimeIsUp) {
  const auto path = test::dataFile("gps/nmea/bu353s4.log");
  test::PtyPair pty;
  ASSERT_TRUE(pty.ok());
  test::ReceiverThread receiver(pty.master(), test::readFile(path), 150);
  const test::ToolRun run = runTool("decode --protocol nmea --seconds 1.5 " + pty.slavePath());
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
