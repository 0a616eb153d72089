#include "app/core/message.h"

#include <gtest/gtest.h>

namespace orvel {
namespace {

TEST(Message, FormatsPrintfArguments) {
  MessageRecorder recorder;
  showMessage("Не удалось открыть карту %s (%d, 0x%04X)", "Monaco.img", -2, 0xBEEFu);
  showMessage("%s", std::string(5000, 'z').c_str());
  showMessage("plain");
  ASSERT_EQ(recorder.messages().size(), 3u);
  EXPECT_EQ(recorder.messages()[0], "Не удалось открыть карту Monaco.img (-2, 0xBEEF)");
  EXPECT_EQ(recorder.messages()[1], std::string(5000, 'z'));
  EXPECT_EQ(recorder.last(), "plain");
  recorder.clear();
  EXPECT_EQ(recorder.last(), "");
}

TEST(Message, RecorderRestoresThePreviousSink) {
  std::vector<std::string> outer;
  MessageSink original = setMessageSink([&outer](const std::string& text) { outer.push_back(text); });
  {
    MessageRecorder recorder;
    {
      MessageRecorder inner;
      showMessage("inner %d", 1);
      EXPECT_EQ(inner.messages(), std::vector<std::string>{"inner 1"});
    }
    showMessage("middle");
    EXPECT_EQ(recorder.messages(), std::vector<std::string>{"middle"});
  }
  showMessage("outer");
  EXPECT_EQ(outer, std::vector<std::string>{"outer"});
  setMessageSink(std::move(original));
}

}  // namespace
}  // namespace orvel
