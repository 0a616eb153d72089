// The icon and pattern files in res/ must be exactly what the drawings in tools/make_art give:
// a changed drawing needs `orvel-make-art res` run.
#include <QDir>
#include <QImage>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include "common/recording_device.h"
#include "make_art/write_art.h"

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

}  // namespace
}  // namespace orvel
