#include "core/message.h"

#include <gtest/gtest.h>

namespace orvel {
namespace {

TEST(Message, FormatsPrintfArgumentsAndCutsAtTheBoxCapacity) {
  Messages messages;
  MessageRecorder recorder(messages);
  showMessage(messages, "Не удалось открыть карту %s (%d, 0x%04X)", "Monaco.img", -2, 0xBEEFu);
  showMessage(messages, "%s", std::string(5000, 'z').c_str());
  // Cyrillic letters are one character each, a four-byte sequence two; never cut inside one.
  const std::string cyrillic = std::string(1038, 'a') + "жж";
  const std::string pair = std::string(1038, 'a') + "\xF0\x9F\x97\xBA";
  showMessage(messages, "%s", cyrillic.c_str());
  showMessage(messages, "%s", pair.c_str());
  showMessage(messages, "plain");
  ASSERT_EQ(recorder.messages().size(), 5u);
  EXPECT_EQ(recorder.messages()[0], "Не удалось открыть карту Monaco.img (-2, 0xBEEF)");
  EXPECT_EQ(recorder.messages()[1], std::string(kMessageCapacity, 'z'));
  EXPECT_EQ(recorder.messages()[2], std::string(1038, 'a') + "ж");
  EXPECT_EQ(recorder.messages()[3], std::string(1038, 'a'));
  EXPECT_EQ(recorder.last(), "plain");
  recorder.clear();
  EXPECT_EQ(recorder.last(), "");
}

}  // namespace
}  // namespace orvel
