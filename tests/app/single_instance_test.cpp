// The built viewer started twice at once: one start hands its map to the other and ends
// with -1.
#include <sys/stat.h>

#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QThread>
#include <gtest/gtest.h>

#include "common/test_data.h"

namespace orvel::test {
namespace {

// Waits (without asserting any time) until the log holds `line` or the first viewer ends.
bool waitForLogLine(const QString& log, const QString& line, QProcess& first) {
  for (int i = 0; i < 600; ++i) {
    QFile file(log);
    if (file.open(QIODevice::ReadOnly) && QString::fromUtf8(file.readAll()).split(u'\n').contains(line)) {
      return true;
    }
    if (first.state() == QProcess::NotRunning) return false;
    first.waitForFinished(50);
  }
  return false;
}

TEST(SingleInstance, OfTwoStartsAtOnceOneHandsItsMapToTheOtherAndEnds) {
  const std::filesystem::path map = dataFile("maps/monaco_unicode.img");
  if (map.empty()) GTEST_SKIP();
  const std::filesystem::path scratch = scratchDir("single_instance");
  const QString dir = QString::fromStdString(scratch.string());
  const QString runtime = dir + QStringLiteral("/runtime");
  std::filesystem::create_directories(runtime.toStdString());
  ::chmod(runtime.toStdString().c_str(), 0700);
  const QString log = dir + QStringLiteral("/first.log");

  QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
  env.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
  env.insert(QStringLiteral("ORVEL_CONFIG_FILE"), dir + QStringLiteral("/GisOrvel.conf"));
  env.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime);
  env.insert(QStringLiteral("XDG_DATA_HOME"), dir + QStringLiteral("/share"));
  env.insert(QStringLiteral("ORVEL_DATA_DIR"), dir + QStringLiteral("/data"));
  env.insert(QStringLiteral("ORVEL_TEST_LOG"), log);

  // Two starts at the same moment: whichever takes the lock first is the viewer, the other
  // hands its map to it, even while it is still starting, and ends with -1.
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

  const QString opened =
      QStringLiteral("opened ") + QFileInfo(QString::fromStdString(map.string())).absoluteFilePath();
  EXPECT_TRUE(waitForLogLine(log, QStringLiteral("listening"), viewer));
  EXPECT_TRUE(waitForLogLine(log, opened, viewer)) << [&log] {
    QFile file(log);
    return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : std::string("(no log)");
  }();
  EXPECT_EQ(viewer.state(), QProcess::Running);

  // Start-up wrote the program's path and its desktop entry.
  QFile settings(dir + QStringLiteral("/GisOrvel.conf"));
  ASSERT_TRUE(settings.open(QIODevice::ReadOnly));
  EXPECT_TRUE(settings.readAll().contains("Path string " ORVEL_VIEWER_PATH));
  QFile entry(dir + QStringLiteral("/share/applications/orvel.desktop"));
  ASSERT_TRUE(entry.open(QIODevice::ReadOnly));
  EXPECT_TRUE(entry.readAll().contains("Exec=" ORVEL_VIEWER_PATH " %f"));

  viewer.terminate();
  viewer.waitForFinished(10000);
}

}  // namespace
}  // namespace orvel::test
