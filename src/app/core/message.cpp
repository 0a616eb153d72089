#include "app/core/message.h"

#include <cstdarg>
#include <cstdio>
#include <mutex>

namespace orvel {
namespace {

std::mutex sinkMutex;

MessageSink& currentSink() {
  static MessageSink sink = [](const std::string& text) { std::fprintf(stderr, "%s\n", text.c_str()); };
  return sink;
}

}  // namespace

void showMessage(const char* format, ...) {
  va_list args;
  va_start(args, format);
  va_list copy;
  va_copy(copy, args);
  const int length = std::vsnprintf(nullptr, 0, format, copy);
  va_end(copy);
  std::string text(length > 0 ? static_cast<size_t>(length) : 0, '\0');
  if (length > 0) std::vsnprintf(text.data(), text.size() + 1, format, args);
  va_end(args);

  MessageSink sink;
  {
    std::lock_guard lock(sinkMutex);
    sink = currentSink();
  }
  if (sink) sink(text);
}

MessageSink setMessageSink(MessageSink sink) {
  std::lock_guard lock(sinkMutex);
  MessageSink previous = std::move(currentSink());
  currentSink() = std::move(sink);
  return previous;
}

MessageRecorder::MessageRecorder() {
  previous_ = setMessageSink([this](const std::string& text) { messages_.push_back(text); });
}

MessageRecorder::~MessageRecorder() { setMessageSink(std::move(previous_)); }

}  // namespace orvel
