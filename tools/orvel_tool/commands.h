#pragma once
// The subcommands of orvel-tool. Each lives in a cmd_*.cpp of its own and has one row in
// the table of main.cpp.
#include <span>
#include <string_view>

namespace orvel::tool {

// Exit codes of every subcommand.
inline constexpr int kExitOk = 0;
inline constexpr int kExitFailed = 1;  // the work failed; the reason went to stderr
inline constexpr int kExitUsage = 2;   // bad command line; a one-line reason went to stderr

struct Command {
  std::string_view name;
  std::string_view summary;  // one line for the tool's --help
  std::string_view usage;    // the subcommand's --help text
  // args are the arguments after the subcommand's name; "--help" is handled by main.
  int (*run)(std::span<const char* const> args);
};

int runInfo(std::span<const char* const> args);
int runWaypoints(std::span<const char* const> args);
int runDecode(std::span<const char* const> args);
int runRecord(std::span<const char* const> args);
int runGpx(std::span<const char* const> args);
int runRender(std::span<const char* const> args);
int runObjects(std::span<const char* const> args);
int runMkorv(std::span<const char* const> args);

// Prints "reason" with the tool's name to stderr and returns kExitUsage.
int usageError(std::string_view command, std::string_view reason);

}  // namespace orvel::tool
