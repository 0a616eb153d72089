#include "capture_source.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "core/utf.h"
#include "gps/fix_text.h"

namespace orvel::tool {

bool parseReplayProtocol(std::string_view text, ReplayProtocol& out) {
  if (text == "nmea") out = ReplayProtocol::kNmea;
  else if (text == "garmin") out = ReplayProtocol::kGarmin;
  else if (text == "auto") out = ReplayProtocol::kAuto;
  else return false;
  return true;
}

bool readCapture(std::string_view command, const char* path, std::vector<uint8_t>& bytes) {
  const auto fail = [&](const char* reason) {
    std::fprintf(stderr, "orvel-tool %.*s: %s: %s\n", static_cast<int>(command.size()), command.data(), path, reason);
    return false;
  };
  struct stat info {};
  if (::stat(path, &info) != 0) return fail(std::strerror(errno));
  if (S_ISCHR(info.st_mode)) return fail("serial devices: not yet");
  if (S_ISDIR(info.st_mode)) return fail("is a folder");
  std::FILE* file = std::fopen(path, "rb");
  if (!file) return fail(std::strerror(errno));
  uint8_t chunk[65536];
  size_t got = 0;
  while ((got = std::fread(chunk, 1, sizeof chunk, file)) > 0) bytes.insert(bytes.end(), chunk, chunk + got);
  const bool ok = !std::ferror(file);
  std::fclose(file);
  return ok || fail("read error");
}

void printReplayEvent(uint64_t ms, ReplayEvent event, std::u16string_view protocol) {
  const char* what = "searching";
  if (event == ReplayEvent::kRecognised) what = "recognised";
  if (event == ReplayEvent::kProtocolError) what = "protocol error";
  if (event == ReplayEvent::kNoData) what = "no data";
  std::fprintf(stderr, "[%llu.%03llu s] %s %s\n", static_cast<unsigned long long>(ms / 1000),
               static_cast<unsigned long long>(ms % 1000), what, utf16ToUtf8(protocol).c_str());
}

PrintingSink::PrintingSink(bool flush, std::function<void(std::u16string_view text)> status)
    : flush_(flush), status_(std::move(status)) {
  // Each satellites message is printed and its latch cleared at once, so that every list
  // posts; fix and status messages are only acknowledged.
  state_.setGpsMessagePoster([this](int message) {
    if (message == kMsgSatellitesChanged) printSatellites();
    state_.clearLatch(message);
  });
}

void PrintingSink::updateFix(const GpsFix& fix) {
  std::printf("%s\n", formatFixLine(fix).c_str());
  if (flush_) std::fflush(stdout);
  fixes_.updateFix(fix);
  ++fixCount_;
}

void PrintingSink::setStatusText(std::u16string_view text) {
  if (status_) status_(text);
  fixes_.setStatusText(text);
}

void PrintingSink::printSatellites() {
  const std::string line = formatSatellitesLine(state_.gpsSnapshot().satellites);
  if (line != lastSatellites_) std::printf("%s\n", line.c_str());
  lastSatellites_ = line;
  if (flush_) std::fflush(stdout);
}

}  // namespace orvel::tool
