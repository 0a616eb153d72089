#pragma once
// Messages the user must see at once ("ГИС Орвел" message box). The core libraries only
// format the text; where it goes is decided by the program: the viewer shows a message
// box, the command-line tool prints to stderr, tests record it.
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace orvel {

inline constexpr std::string_view kMessageCaption = "ГИС Орвел";

using MessageSink = std::function<void(const std::string& text)>;

// Shows a printf-formatted UTF-8 message through the current sink.
void showMessage(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Replaces the sink; returns the previous one. The default sink writes the text to stderr.
MessageSink setMessageSink(MessageSink sink);

// Collects every message shown while it lives (for tests and headless runs).
class MessageRecorder {
 public:
  MessageRecorder();
  ~MessageRecorder();
  MessageRecorder(const MessageRecorder&) = delete;
  MessageRecorder& operator=(const MessageRecorder&) = delete;

  const std::vector<std::string>& messages() const { return messages_; }
  std::string last() const { return messages_.empty() ? std::string{} : messages_.back(); }
  void clear() { messages_.clear(); }

 private:
  std::vector<std::string> messages_;
  MessageSink previous_;
};

}  // namespace orvel
