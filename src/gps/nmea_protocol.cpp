#include "gps/nmea_protocol.h"

#include <algorithm>
#include <string_view>

#include "gps/nmea_sentences.h"

namespace orvel {
namespace {

// Text in any 8-bit encoding or UTF-8: no control characters but tab and line ends. Binary
// data has control bytes within a few dozen bytes.
bool isPrintable(uint8_t b) { return (b >= 0x20 && b != 0x7F) || b == '\r' || b == '\n' || b == '\t'; }

int hexDigit(uint8_t c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// A line that ends with "*", two hex digits and CR LF must match the exclusive-or of the
// bytes between "$" and "*". A line without a checksum in that place is taken unchecked.
bool checksumHolds(std::span<const uint8_t> text, size_t lineStart, size_t lineEnd) {
  if (lineEnd < lineStart + 6) return true;
  const size_t star = lineEnd - 5;
  if (text[star] != '*') return true;
  uint8_t sum = 0;
  for (size_t i = lineStart + 1; i < star; ++i) sum ^= text[i];
  size_t i = star + 1;
  while (i < lineEnd && text[i] == ' ') ++i;
  uint32_t stated = 0;
  for (; i < lineEnd && hexDigit(text[i]) >= 0; ++i) stated = stated * 16u + static_cast<uint32_t>(hexDigit(text[i]));
  return stated == sum;
}

// Binary data that happens to hold a "$": a control byte or a byte outside ASCII among the
// eight bytes after it. Every receiver's sentence begins with a printable address there,
// four letters ("$PUBX,") or five ("$GPRMC"), upper-case or not.
bool binaryAfterDollar(std::span<const uint8_t> piece) {
  if (piece.empty() || piece[0] != '$') return false;
  const auto after = piece.subspan(1, std::min<size_t>(8, piece.size() - 1));
  return std::any_of(after.begin(), after.end(), [](uint8_t b) { return !isPrintable(b) || b > 0x7E; });
}

std::string_view asText(std::span<const uint8_t> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

NmeaProtocol::NmeaProtocol(TickClock clock, GpsSink& sink) : GpsProtocol(std::move(clock), sink), satellites_(sink) {}

void NmeaProtocol::open() {
  if (GpsPort* p = port()) {
    p->setLineSettings(4800, 8, false, 1);
    p->setTimeouts(kReceiverTimeouts);
    p->purge();
  }
  pending_ = false;
  bufferLength_ = 0;
  lastReceiveTick_ = now();
  lastFlushTick_ = lastReceiveTick_;
  assembling_ = GpsFix{};
  satellites_.clear();
  skipping_ = false;
  droppedText_ = 0;
}

void NmeaProtocol::handOver(uint32_t now) {
  if (!eachSentence_) sink().updateFix(assembling_);
  assembling_ = GpsFix{};
  pending_ = false;
  lastFlushTick_ = now;
  satellites_.beginBurst();
}

void NmeaProtocol::append(std::span<const uint8_t> bytes) {
  std::copy(bytes.begin(), bytes.end(), buffer_.begin() + static_cast<std::ptrdiff_t>(bufferLength_));
  bufferLength_ += bytes.size();
}

bool NmeaProtocol::dropText(std::span<const uint8_t> first, std::span<const uint8_t> second) {
  const auto printable = [](std::span<const uint8_t> part) { return std::all_of(part.begin(), part.end(), isPrintable); };
  if (!printable(first) || !printable(second)) return false;
  // A sentence that went on too long, or lines of text before the first sentence. Without
  // "$" and without line structure it is something else.
  const uint8_t lead = !first.empty() ? first[0] : !second.empty() ? second[0] : 0;
  const auto hasLineFeed = [](std::span<const uint8_t> part) {
    return std::find(part.begin(), part.end(), uint8_t{'\n'}) != part.end();
  };
  if (lead != '$' && !hasLineFeed(first) && !hasLineFeed(second)) return false;
  droppedText_ += first.size() + second.size();
  return droppedText_ <= kMaxDroppedText;
}

bool NmeaProtocol::skip(std::span<const uint8_t> bytes) {
  if (!std::all_of(bytes.begin(), bytes.end(), isPrintable)) return false;
  droppedText_ += bytes.size();
  return droppedText_ <= kMaxDroppedText;
}

ProcessResult NmeaProtocol::process(std::span<const uint8_t> bytes) {
  const uint32_t tick = now();
  if (bytes.empty()) {
    const uint32_t idle = tick - lastReceiveTick_;
    if (idle > kSilenceMs) return ProcessResult::kFailed;
    if (!pending_ || idle < kQuietGapMs) return ProcessResult::kNothing;
    handOver(tick);
    return ProcessResult::kRecognised;
  }
  lastReceiveTick_ = tick;
  if (pending_ && tick - lastFlushTick_ > kMaxHoldMs) handOver(tick);

  const auto dollar = std::find(bytes.begin(), bytes.end(), uint8_t{'$'});
  const std::span<const uint8_t> held(buffer_.data(), bufferLength_);
  if (dollar == bytes.end()) {
    if (skipping_) return skip(bytes) ? pendingResult() : ProcessResult::kFailed;
    if (bufferLength_ + bytes.size() >= kBufferSize) {
      if (!dropText(held, bytes)) return ProcessResult::kFailed;
      bufferLength_ = 0;
      skipping_ = true;
      return pendingResult();
    }
    append(bytes);
    return pendingResult();
  }

  // The end of the held sentence, up to the first "$".
  const size_t first = static_cast<size_t>(dollar - bytes.begin());
  const std::span<const uint8_t> head = bytes.first(first);
  if (skipping_) {
    if (!skip(head)) return ProcessResult::kFailed;
    skipping_ = false;
  } else if (bufferLength_ + first >= kBufferSize) {
    if (!dropText(held, head)) return ProcessResult::kFailed;
  } else {
    append(head);
    const std::span<const uint8_t> sentence(buffer_.data(), bufferLength_);
    if (!binaryAfterDollar(sentence) && parseSentences(sentence)) pending_ = true;
  }
  bufferLength_ = 0;

  // Every complete sentence from one "$" to the next.
  size_t start = first;
  const std::string_view text = asText(bytes);
  for (size_t next = text.find('$', start + 1); next != std::string_view::npos; next = text.find('$', start + 1)) {
    const std::span<const uint8_t> piece = bytes.subspan(start, next - start);
    if (binaryAfterDollar(piece) || !parseSentences(piece)) return ProcessResult::kFailed;
    pending_ = true;
    start = next;
  }

  // The last sentence waits for its end.
  const std::span<const uint8_t> tail = bytes.subspan(start);
  if (tail.size() >= kBufferSize) {
    if (!dropText({}, tail)) return ProcessResult::kFailed;
    skipping_ = true;
  } else {
    append(tail);
  }
  return pendingResult();
}

bool NmeaProtocol::parseSentences(std::span<const uint8_t> text) {
  bool counted = false;
  size_t lineStart = 0;
  while (lineStart < text.size()) {
    const auto lf = std::find(text.begin() + static_cast<std::ptrdiff_t>(lineStart), text.end(), uint8_t{'\n'});
    const size_t lineEnd = lf == text.end() ? text.size() : static_cast<size_t>(lf - text.begin()) + 1;
    if (text[lineStart] == '$' && lineStart + 8 < text.size()) {
      counted = true;
      if (checksumHolds(text, lineStart, lineEnd)) {
        uint32_t set = 0;
        const std::string_view sentence = asText(text.subspan(lineStart, lineEnd - lineStart));
        if (decodeNmeaSentence(sentence, assembling_, satellites_, set) && eachSentence_) {
          sink().updateFix(assembling_);
          assembling_ = GpsFix{};
        }
      }
    }
    lineStart = lineEnd;
  }
  if (counted) droppedText_ = 0;
  return counted;
}

}  // namespace orvel
