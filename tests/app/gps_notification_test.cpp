// The reception indicator: its three states driven by fixes and by the scanner's calls,
// caught up on the window's thread, and its icons.
#include <QLabel>
#include <QStatusBar>
#include <QSystemTrayIcon>
#include <thread>

#include "app/gps_notification.h"
#include "gps/fix_processing.h"
#include "shell_fixture.h"

namespace orvel::test {
namespace {

class GpsNotificationTest : public ShellTest {
 protected:
  void SetUp() override {
    ShellTest::SetUp();
    FixObserver observer;
    observer.showReception = [this](uint32_t used) {
      if (notification) notification->showSatellites(used);
    };
    fixes.setFixObserver(std::move(observer));
  }
  void TearDown() override {
    notification.reset();
    fixes.setFixObserver(FixObserver{});
    ShellTest::TearDown();
  }
  void createGpsNotification() { notification = std::make_unique<GpsNotification>(*window, session->settings); }
  int shownIconId() { return notification->receptionLabel()->property("iconId").toInt(); }

  std::unique_ptr<GpsNotification> notification;
};

// One thing that happens to the receiver.
struct Event {
  enum Kind { Fix, Connected, Lost, FixLost } kind;
  uint32_t flags = 0;
  uint32_t satellitesUsed = 0;
};

GpsFix makeFix(uint32_t flags, uint32_t used) {
  GpsFix fix;
  fix.flags = flags;
  fix.longitude = 7.42f;
  fix.latitude = 43.73f;
  fix.satellitesUsed = used;
  return fix;
}

void apply(const Event& event, FixProcessor& fixes, GpsNotification& notification) {
  switch (event.kind) {
    case Event::Fix: fixes.updateFix(makeFix(event.flags, event.satellitesUsed)); break;
    case Event::Connected: notification.showSatellites(0); break;
    case Event::Lost: notification.showNoConnection(); break;
    case Event::FixLost: fixes.fixLost(); break;
  }
}

constexpr uint32_t kPos = kFixPosition | kFixTime;
constexpr uint32_t kUsed = kFixSatellitesUsed;

struct Sequence {
  const char* what;
  std::vector<Event> events;
  std::vector<int> icons;  // the icon after each event
};

TEST_F(GpsNotificationTest, FollowsTheReceiverThroughEachSequence) {
  const Sequence sequences[] = {
      {"found, then fixes with satellites",
       {{Event::Connected}, {Event::Fix, kPos | kUsed, 6}, {Event::Fix, kPos | kUsed, 7}},
       {107, 127, 127}},
      {"satellites used but no position still count",
       {{Event::Connected}, {Event::Fix, kUsed, 3}},
       {107, 127}},
      {"a fix that does not say how many is read as none",
       {{Event::Fix, kPos | kUsed, 5}, {Event::Fix, kPos, 9}},
       {127, 107}},
      {"zero satellites used",
       {{Event::Fix, kPos | kUsed, 4}, {Event::Fix, kPos | kUsed, 0}},
       {127, 107}},
      {"lost after receiving: back to no connection while the fix stays",
       {{Event::Fix, kPos | kUsed, 8}, {Event::Lost}},
       {127, 105}},
      {"losing the fix alone does not change the icon",
       {{Event::Fix, kPos | kUsed, 8}, {Event::FixLost}, {Event::Fix, kUsed, 0}},
       {127, 127, 107}},
      {"found again after a loss",
       {{Event::Lost}, {Event::Connected}, {Event::Fix, kPos | kUsed, 4}, {Event::Lost}},
       {105, 107, 127, 105}},
  };
  startWindow();
  for (const Sequence& sequence : sequences) {
    gps.exchangeFix(GpsFix{});
    createGpsNotification();
    ASSERT_EQ(shownIconId(), kIconNoConnection) << sequence.what;
    ASSERT_EQ(sequence.events.size(), sequence.icons.size());
    for (size_t i = 0; i < sequence.events.size(); ++i) {
      apply(sequence.events[i], fixes, *notification);
      processEvents();
      EXPECT_EQ(shownIconId(), sequence.icons[i]) << sequence.what << ", event " << i;
      EXPECT_EQ(receptionIconId(notification->shownReception()), sequence.icons[i]);
      EXPECT_EQ(receptionIconId(notification->gpsReception()), sequence.icons[i]);
    }
    notification.reset();
  }
  // Losing the fix left the shown fix in place: the pages still show it.
  EXPECT_TRUE(gps.currentFix().has(kFixSatellitesUsed));
}

TEST_F(GpsNotificationTest, ABurstFromTheReadingThreadEndsInItsLastState) {
  startWindow();
  createGpsNotification();
  std::thread reader([this] {
    for (uint32_t i = 0; i < 500; ++i) fixes.updateFix(makeFix(kPos | kUsed, i % 9));
    notification->showNoConnection();
    notification->showSatellites(0);
    fixes.updateFix(makeFix(kPos | kUsed, 11));
  });
  reader.join();
  // Nothing changes on the window until its thread runs.
  EXPECT_EQ(notification->shownReception(), GpsReception::NoConnection);
  EXPECT_EQ(notification->gpsReception(), GpsReception::Receiving);
  processEvents();
  EXPECT_EQ(notification->shownReception(), GpsReception::Receiving);
  EXPECT_EQ(shownIconId(), kIconReceiving);
}

TEST_F(GpsNotificationTest, AnUpdateQueuedWhenTheIconsGoAwayIsDropped) {
  startWindow();
  createGpsNotification();
  notification->showSatellites(2);
  notification.reset();
  processEvents();  // must not touch the deleted indicator
  createGpsNotification();
  EXPECT_EQ(notification->shownReception(), GpsReception::NoConnection);
}

}  // namespace
}  // namespace orvel::test
