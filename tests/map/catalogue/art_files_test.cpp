// The icon and pattern files in res/ and the resources built from them must be exactly what
// the drawings in tools/make_art give: a changed drawing needs `orvel-make-art res` run.
#include <cstdint>
#include <vector>

#include <QDir>
#include <QImage>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "make_art/draw_icons.h"
#include "make_art/draw_patterns.h"
#include "make_art/write_art.h"
#include "map/catalogue/icons.h"
#include "map/catalogue/patterns.h"

namespace orvel {
namespace {

QStringList pngsIn(const QString& dir) {
  return QDir(dir).entryList({QStringLiteral("*.png")}, QDir::Files, QDir::Name);
}

QImage pixels(const QString& path) { return QImage(path).convertToFormat(QImage::Format_ARGB32); }

class ArtFiles : public ::testing::TestWithParam<const char*> {};

TEST_P(ArtFiles, InResAreWhatTheGeneratorWritesNow) {
  QTemporaryDir scratch;
  ASSERT_TRUE(scratch.isValid());
  ASSERT_EQ(art::writeArt(scratch.path()), QString());

  const QString sub = QString::fromLatin1(GetParam());
  const QString fresh = QDir(scratch.path()).filePath(sub);
  const QString committed = QDir(QStringLiteral(ORVEL_RES_DIR)).filePath(sub);
  const QStringList names = pngsIn(fresh);
  ASSERT_FALSE(names.isEmpty());
  EXPECT_EQ(pngsIn(committed), names) << "stale or missing files in res/" << sub.toStdString();
  for (const QString& name : names) {
    const QImage drawn = pixels(QDir(fresh).filePath(name));
    const QImage stored = pixels(QDir(committed).filePath(name));
    ASSERT_FALSE(drawn.isNull()) << name.toStdString();
    EXPECT_EQ(stored, drawn) << sub.toStdString() << "/" << name.toStdString();
  }
}

INSTANTIATE_TEST_SUITE_P(Folders, ArtFiles, ::testing::Values("icons", "patterns"));

TEST(ArtResources, IconsLoadAsDrawn) {
  const auto drawn = art::drawnIconIds();
  const auto loaded = iconIds();
  ASSERT_EQ(std::vector<uint16_t>(loaded.begin(), loaded.end()),
            std::vector<uint16_t>(drawn.begin(), drawn.end()));
  for (uint16_t id : drawn) {
    const QImage icon = loadIcon(id);
    ASSERT_EQ(icon.size(), QSize(kIconSize, kIconSize)) << id;
    EXPECT_EQ(icon.format(), QImage::Format_ARGB32_Premultiplied) << id;
    EXPECT_EQ(icon, art::drawIcon(id)) << id;
  }
}

TEST(ArtResources, PatternsLoadAsDrawn) {
  for (int id = kFirstPatternId; id <= kLastPatternId; ++id) {
    const QImage tile = loadPatternTile(id);
    EXPECT_EQ(tile.format(), QImage::Format_RGB32) << id;
    EXPECT_EQ(tile, art::drawPatternTile(id)) << id;
  }
}

}  // namespace
}  // namespace orvel
