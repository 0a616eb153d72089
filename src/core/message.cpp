#include "core/message.h"

#include <cstdarg>
#include <cstdio>

namespace orvel {
namespace {

void writeToStderr(const std::string& text) { std::fprintf(stderr, "%s\n", text.c_str()); }

// The byte length of the longest start of `text` that fills at most `capacity` UTF-16
// characters, never ending inside a character.
size_t cutPoint(std::string_view text, size_t capacity) {
  size_t units = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if ((byte & 0xC0) == 0x80) continue;  // inside a character
    units += byte >= 0xF0 ? 2 : 1;        // four-byte sequences are surrogate pairs
    if (units > capacity) return i;
  }
  return text.size();
}

}  // namespace

Messages::Messages() : sink_(writeToStderr) {}

Messages::Messages(MessageSink sink) : sink_(std::move(sink)) {}

MessageSink Messages::setSink(MessageSink sink) {
  std::lock_guard lock(mutex_);
  MessageSink previous = std::move(sink_);
  sink_ = std::move(sink);
  return previous;
}

void Messages::deliver(std::string text) {
  text.resize(cutPoint(text, kMessageCapacity));
  MessageSink sink;
  {
    std::lock_guard lock(mutex_);
    sink = sink_;
  }
  if (sink) sink(text);
}

namespace {

std::string formatMessage(const char* format, va_list args) {
  va_list copy;
  va_copy(copy, args);
  const int length = std::vsnprintf(nullptr, 0, format, copy);
  va_end(copy);
  std::string text(length > 0 ? static_cast<size_t>(length) : 0, '\0');
  if (length > 0) std::vsnprintf(text.data(), text.size() + 1, format, args);
  return text;
}

}  // namespace

void showMessage(Messages& messages, const char* format, ...) {
  va_list args;
  va_start(args, format);
  std::string text = formatMessage(format, args);
  va_end(args);
  messages.deliver(std::move(text));
}



MessageRecorder::MessageRecorder(Messages& messages) : source_(messages) {
  previous_ = source_.setSink([this](const std::string& text) { messages_.push_back(text); });
}

MessageRecorder::~MessageRecorder() { source_.setSink(std::move(previous_)); }

}  // namespace orvel
