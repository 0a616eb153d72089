// The built viewer started twice at once: the lock is the first thing a start takes, so one
// start is the viewer and the other hands its map to it, even while it is still starting,
// and ends with -1.
#include <sys/stat.h>

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <gtest/gtest.h>

#include "common/test_data.h"

namespace orvel::test {
namespace {

TEST(SingleInstance, OfTwoStartsAtOnceOneHandsItsMapToTheOtherAndEnds) {
  const std::filesystem::path map = dataFile("maps/monaco_unicode.img");
  ASSERT_FALSE(map.empty());
  const std::filesystem::path scratch = scratchDir("single_instance");
  const QString dir = QString::fromStdString(scratch.string());
  std::filesystem::create_directories(scratch / "runtime");
  ::chmod((scratch / "runtime").c_str(), 0700);
  const QString log = dir + QStringLiteral("/viewer.log");
  QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
  env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
  env.insert(QStringLiteral("ORVEL_CONFIG_FILE"), dir + QStringLiteral("/GisOrvel.conf"));
  env.insert(QStringLiteral("XDG_RUNTIME_DIR"), dir + QStringLiteral("/runtime"));
  env.insert(QStringLiteral("XDG_DATA_HOME"), dir + QStringLiteral("/share"));
  env.insert(QStringLiteral("ORVEL_DATA_DIR"), dir + QStringLiteral("/data"));
  env.insert(QStringLiteral("ORVEL_TEST_LOG"), log);

  QProcess first, second;
  for (QProcess* start : {&first, &second}) {
    start->setProcessEnvironment(env);
    start->setProcessChannelMode(QProcess::ForwardedErrorChannel);
  }
  first.start(QStringLiteral(ORVEL_VIEWER_PATH), {});
  second.start(QStringLiteral(ORVEL_VIEWER_PATH), {QString::fromStdString(map.string())});
  ASSERT_TRUE(first.waitForStarted() && second.waitForStarted());
  QProcess* ended = nullptr;
  // A process's state is brought up to date only by waiting on that process.
  for (int i = 0; i < 600 && !ended; ++i) {
    if (first.waitForFinished(25) || first.state() == QProcess::NotRunning) ended = &first;
    if (second.waitForFinished(25) || second.state() == QProcess::NotRunning) ended = &second;
  }
  ASSERT_NE(ended, nullptr) << "both viewers kept running";
  QProcess& viewer = ended == &first ? second : first;
  EXPECT_EQ(ended->exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(ended->exitCode(), 255);

  // The viewer's log says it listens and opened the map handed over (no time is asserted).
  const QString opened = QStringLiteral("opened ") + QFileInfo(QString::fromStdString(map.string())).absoluteFilePath();
  QStringList lines;
  for (int i = 0; i < 600 && !lines.contains(opened) && viewer.state() == QProcess::Running; ++i) {
    viewer.waitForFinished(50);
    QFile file(log);
    if (file.open(QIODevice::ReadOnly)) lines = QString::fromUtf8(file.readAll()).split(u'\n');
  }
  EXPECT_TRUE(lines.contains(QStringLiteral("listening"))) << lines.join(u'|').toStdString();
  EXPECT_TRUE(lines.contains(opened)) << lines.join(u'|').toStdString();
  EXPECT_EQ(viewer.state(), QProcess::Running);
  viewer.terminate();
  viewer.waitForFinished(10000);
}

}  // namespace
}  // namespace orvel::test
