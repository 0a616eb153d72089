#pragma once
// Messages the user must see at once ("ГИС Орвел" message box). The libraries only format
// the text; where it goes is decided by the program: the viewer shows a message box, the
// command-line tool prints to stderr, tests record it. Each program (and each test) owns
// one Messages object and hands it to what may have to tell the user something.
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace orvel {

inline constexpr std::string_view kMessageCaption = "ГИС Орвел";
// The message box holds at most this many UTF-16 characters; longer texts are cut.
inline constexpr size_t kMessageCapacity = 1039;

using MessageSink = std::function<void(const std::string& text)>;

class Messages {
 public:
  // The default sink writes each text to stderr.
  Messages();
  explicit Messages(MessageSink sink);
  Messages(const Messages&) = delete;
  Messages& operator=(const Messages&) = delete;

  // Replaces the sink; returns the previous one.
  MessageSink setSink(MessageSink sink);
  // Hands the text, cut to kMessageCapacity characters, to the sink.
  void deliver(std::string text);

 private:
  std::mutex mutex_;  // messages may come from reading threads
  MessageSink sink_;
};

// Shows a printf-formatted UTF-8 message through the sink of `messages`.
void showMessage(Messages& messages, const char* format, ...) __attribute__((format(printf, 2, 3)));

// Collects every message shown while it lives (for tests and headless runs).
class MessageRecorder {
 public:
  explicit MessageRecorder(Messages& messages);
  ~MessageRecorder();
  MessageRecorder(const MessageRecorder&) = delete;
  MessageRecorder& operator=(const MessageRecorder&) = delete;

  const std::vector<std::string>& messages() const { return messages_; }
  std::string last() const { return messages_.empty() ? std::string{} : messages_.back(); }
  void clear() { messages_.clear(); }

 private:
  Messages& source_;
  std::vector<std::string> messages_;
  MessageSink previous_;
};

}  // namespace orvel
