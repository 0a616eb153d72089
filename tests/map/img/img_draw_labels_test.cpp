// Labels of the real maps: the label offset multiplier applied, references outside the
// label data, and the quick measure of every label's width.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

#include <QPainter>

#include "map/img/draw_test_util.h"
#include "map/img/rgn_decoder.h"
#include "view/text_draw.h"

namespace orvel {
namespace {

using test::DrawCall;

class Codings : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { test::ensureGuiApplication(); }
};

// The label offset multiplier of these maps is 1: a reference n stands for byte 2n of the
// label data. The texts' byte offsets are found in the files themselves.
TEST_F(Codings, ReferencesCountInUnitsOfTheLabelMultiplier) {
  struct Case {
    const char* map;
    QByteArray bytes;
    const char* text;
  };
  const Case cases[] = {
      {"monaco_cp1252.img", QByteArray("Avenue Crovetto-Fr\xe8res"), "Avenue Crovetto-Frères"},
      {"monaco_unicode.img", QByteArray("Avenue Crovetto-Fr\xc3\xa8res"), "Avenue Crovetto-Frères"},
      {"liechtenstein_route_cp1252_bs512.img", QByteArray("\xc4ulestrasse"), "Äulestrasse"},
  };
  for (const Case& c : cases) {
    const auto loaded = test::loadMap(c.map);
    ASSERT_TRUE(loaded) << c.map;
    ImgMapFile& map = loaded->map;
    ASSERT_EQ(map.labelShift(), 1) << c.map;
    const QByteArray file(reinterpret_cast<const char*>(loaded->bytes.data()), qsizetype(loaded->bytes.size()));
    const qsizetype at = file.indexOf(c.bytes);
    ASSERT_GE(at, 0) << c.map;
    const auto labelStart = map.labelData().data() - map.fileBytes().data();
    const auto offset = static_cast<uint32_t>(at - labelStart);
    ASSERT_EQ(offset % 2, 0u) << c.map;
    // Labels start after the previous label's terminator.
    ASSERT_EQ(loaded->bytes[size_t(at) - 1], 0) << c.map;

    char16_t text[kLabelCapacity + 1];
    const int length = map.getLabel(offset / 2, text);
    EXPECT_EQ(QString::fromUtf16(text, length), QString::fromUtf8(c.text)) << c.map;
    EXPECT_EQ(text[length], 0);
    // Taken as a byte offset, the reference lands elsewhere.
    map.getLabel(offset, text);
    EXPECT_NE(QString::fromUtf16(text), QString::fromUtf8(c.text)) << c.map;
  }
}

TEST_F(Codings, ReferencesOutsideTheLabelDataGiveEmptyTexts) {
  const auto loaded = test::loadMap("monaco_cp1252.img");
  ASSERT_TRUE(loaded);
  char16_t text[kLabelCapacity + 1];
  for (uint32_t ref : {0x3FFFFFu, uint32_t(loaded->map.labelData().size() / 2), 0xFFFFFFFFu}) {
    text[0] = u'x';
    EXPECT_EQ(loaded->map.getLabel(ref, text), 0) << ref;
    EXPECT_EQ(text[0], 0);
  }
}

// Label widths are summed from cached character advances; that must give what laying the
// text out gives, for every label of the maps in every label font.
TEST_F(Codings, QuickWidthsOfEveryLabelMatchTheLaidOutText) {
  const MapStyles& styles = test::mapStyles();
  const QFont fonts[] = {styles.label(LabelId::ABlack).font, styles.label(LabelId::P12Grey).font,
                         styles.label(LabelId::P14Black).font, styles.label(LabelId::P18Black).font};
  for (const char* name : {"monaco_cp1252.img", "monaco_default_6bit.img", "liechtenstein_route_cp1252_bs512.img"}) {
    const auto loaded = test::loadMap(name);
    ASSERT_TRUE(loaded) << name;
    struct AllLabels : ObjectConsumer {
      MapFile* map;
      std::set<QString> texts;
      void onObject(const MapObject& o) override {
        char16_t text[kLabelCapacity + 1];
        if (o.labelRef != 0) texts.insert(QString::fromUtf16(text, map->getLabel(o.labelRef, text)));
      }
    } all;
    all.map = &loaded->map;
    for (int level = 0; level < int(loaded->map.levels().size()); ++level) {
      decodeImgLevel(makeImgDecodeInput(loaded->map), level, loaded->map.bounds(), all);
    }
    ASSERT_GT(all.texts.size(), 50u) << name;
    for (const QFont& font : fonts) {
      const QFontMetrics metrics(font);
      for (const QString& text : all.texts) {
        const QSize quick = textExtent(font, std::u16string_view(reinterpret_cast<const char16_t*>(text.utf16()),
                                                                size_t(text.size())));
        ASSERT_EQ(quick.width(), metrics.horizontalAdvance(text)) << name << ": " << text.toStdString();
        ASSERT_EQ(quick.height(), metrics.height());
      }
    }
  }
}

}  // namespace
}  // namespace orvel
