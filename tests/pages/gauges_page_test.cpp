#include <fstream>

#include <QDialog>
#include <QPushButton>
#include <QTreeWidget>

#include "pages/commands.h"
#include "pages/gauge_dialog.h"
#include "pages/gauge_types.h"
#include "pages/gauges_page.h"
#include "pages_fixture.h"

namespace orvel::test {
namespace {

void writeText(const std::filesystem::path& file, const char* text) { std::ofstream(file) << text; }

class GaugesPageTest : public PagesTest {
 protected:
  void SetUp() override {
    PagesTest::SetUp();
    gaugesPage().initialize();
  }

  std::u16string keyOf(int cell) {
    const GaugeRegistration* entry = gaugesPage().cell(cell);
    return entry == nullptr ? u"<empty>" : entry->key;
  }

  // Holds on (x, y), then picks the menu item `command`; the dialog, if any, is answered
  // by `answer`.
  int holdAndChoose(int x, int y, int command, std::function<int(QDialog&)> answer = nullptr) {
    host_.answerDialog = std::move(answer);
    gaugesPage().onContextMenu(x, y);
    return gaugesPage().onCommand(command);
  }
};

TEST_F(GaugesPageTest, FirstStartShowsTheInitialSet) {
  const std::u16string expected[] = {u"speed", u"azimuth", u"vspeed", u"elev", u"hdop",
                                     u"satellites", u"time", u"power", u"<empty>", u"<empty>"};
  for (int i = 0; i < kGaugeCellCount; ++i) EXPECT_EQ(keyOf(i), expected[i]) << i;
}

TEST_F(GaugesPageTest, UnknownKeyLeavesItsCellEmpty) {
  settings_.writeSettingString("Gauge_3", u"compass");
  settings_.writeSettingString("Gauge_8", u"magvar");
  gaugesPage().loadCells();
  EXPECT_EQ(keyOf(3), u"<empty>");
  EXPECT_EQ(keyOf(8), u"magvar");
}

TEST_F(GaugesPageTest, GridOfTwoByFiveCellsOnTheSmallScreen) {
  const std::filesystem::path& power = power_;
  std::filesystem::create_directories(power / "AC");
  writeText(power / "AC" / "type", "Mains\n");
  writeText(power / "AC" / "online", "1\n");
  const std::vector<DrawCall> calls = record(gaugesPage());
  std::vector<QRectF> cells;
  for (const DrawCall& call : calls) {
    if (call.kind == DrawCall::Kind::Rects && call.brush.color() == Qt::white) cells.push_back(call.rect);
  }
  ASSERT_EQ(cells.size(), 10u);
  for (int i = 0; i < 10; ++i) {
    EXPECT_EQ(cells[static_cast<size_t>(i)], QRectF(120 * (i % 2), 55 * (i / 2), 119, 54)) << i;
  }
  // Titles at (x + 10, y + 5) and values below them; no fix yet, so the values are "-".
  int titles = 0;
  int dashes = 0;
  for (const DrawnText& drawn : drawnTexts(calls)) {
    if (drawn.text == QStringLiteral("Верт. скорость")) {
      ++titles;
      EXPECT_EQ(drawn.origin.x(), 10);
    }
    if (drawn.text == QStringLiteral("-")) ++dashes;
  }
  EXPECT_EQ(titles, 1);
  EXPECT_EQ(dashes, 7);  // all but the battery, on external power
}

TEST_F(GaugesPageTest, AllFiveRowsFitTheClientAreaAndFontsFollowTheCell) {
  struct Case {
    int width, height;   // client area
    int cellWidth, cellHeight;
    double minScale, maxScale;
  };
  const Case cases[] = {
      {240, 320, 120, 55, 1.0, 1.0},    // the original screen
      {240, 268, 120, 53, 0.96, 0.97},  // 240 x 320 less the menu and status bars
      {480, 225, 240, 45, 0.81, 0.82},  // 480 x 272 less the bars
      {800, 450, 400, 90, 1.6, 1.7},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::to_string(c.width) + "x" + std::to_string(c.height));
    const GaugeGrid grid = gaugeGrid(c.width, c.height);
    EXPECT_EQ(grid.cellWidth, c.cellWidth);
    EXPECT_EQ(grid.cellHeight, c.cellHeight);
    EXPECT_GE(grid.scale, c.minScale);
    EXPECT_LE(grid.scale, c.maxScale);
    EXPECT_LE(gaugeCellRect(grid, 9).bottom(), c.height - 1);
    EXPECT_EQ(gaugeCellAt(grid, c.width - 1, gaugeCellRect(grid, 9).bottom()), 9);
  }
  EXPECT_EQ(gaugeCellRect(gaugeGrid(800, 450), 9), QRect(400, 360, 400, 90));
  EXPECT_EQ(gaugeCellAt(gaugeGrid(240, 268), 130, 60), 3);
}

TEST_F(GaugesPageTest, EveryGaugeIsUpdatedOnEveryFixShownOrNot) {
  GpsFix fix;
  fix.flags = kFixMagneticVariation | kFixSpeed;
  fix.magneticVariation = 3.0f;
  fix.speed = 12.5f;
  gps.exchangeFix(fix);
  gaugesPage().onFixChanged();
  EXPECT_EQ(repaints_, 1);
  EXPECT_EQ(gaugesPage().gauges().findGauge(u"magvar")->gauge->format(), u"3.0°");  // shown by no cell
  bool speedShown = false;
  for (const QString& text : textsOf(record(gaugesPage()))) speedShown |= text == QStringLiteral("12.5 км/ч");
  EXPECT_TRUE(speedShown);
}

TEST_F(GaugesPageTest, BecomingCurrentCatchesUpWithTheLatestFix) {
  GpsFix fix;
  fix.flags = kFixAltitude;
  fix.altitude = 312.0f;
  gps.exchangeFix(fix);  // heard by whichever page was current, not this one
  gaugesPage().activate();
  EXPECT_EQ(gaugesPage().gauges().findGauge(u"elev")->gauge->format(), u"312.0 м");
}

TEST_F(GaugesPageTest, TapAndHoldShowsMenu125WhereHeld) {
  gaugesPage().onContextMenu(130, 60);
  ASSERT_EQ(popups_.size(), 1u);
  EXPECT_EQ(popups_[0].menu, 125);
  EXPECT_EQ(popups_[0].x, 130);
  EXPECT_EQ(popups_[0].y, 60);
}

TEST_F(GaugesPageTest, ChoiceDialogListsEveryTypeWithTheCellsOneSelected) {
  int runs = 0;
  holdAndChoose(130, 60, kCmdChooseGauge, [&runs](QDialog& dialog) {
    ++runs;
    QTreeWidget* list = gaugeChoiceList(dialog);
    EXPECT_NE(list, nullptr);
    if (list == nullptr) return 0;
    EXPECT_EQ(list->headerItem()->text(0), QStringLiteral("Датчик"));
    EXPECT_EQ(list->topLevelItemCount(), 15);
    EXPECT_EQ(list->topLevelItem(0)->text(0), QStringLiteral("Верт. скорость"));
    EXPECT_EQ(list->topLevelItem(14)->text(0), QStringLiteral("Азимут"));
    const QList<QTreeWidgetItem*> selected = list->selectedItems();
    EXPECT_EQ(selected.size(), 1);
    if (!selected.isEmpty()) {
      EXPECT_EQ(selected.front()->text(0), QStringLiteral("Высота"));  // cell 3: "elev"
    }
    return 0;
  });
  EXPECT_EQ(runs, 1);
}

void pressOk(QDialog& dialog) {
  QPushButton* ok = dialog.findChild<QPushButton*>(QStringLiteral("1"));
  ASSERT_NE(ok, nullptr);
  ok->click();
}

// Answers the dialog by selecting the row titled `title` and pressing OK.
std::function<int(QDialog&)> choose(const QString& title) {
  return [title](QDialog& dialog) {
    QTreeWidget* list = gaugeChoiceList(dialog);
    list->clearSelection();
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
      if (list->topLevelItem(i)->text(0) == title) list->topLevelItem(i)->setSelected(true);
    }
    pressOk(dialog);
    return dialog.result();
  };
}

TEST_F(GaugesPageTest, ChoicePersistsInTheCellsSetting) {
  holdAndChoose(130, 60, kCmdChooseGauge, choose(QStringLiteral("Высота геоида")));
  EXPECT_EQ(keyOf(3), u"geoid");
  EXPECT_EQ(settings_.readSettingString("Gauge_3", u""), u"geoid");
  EXPECT_EQ(repaints_, 1);
  holdAndChoose(10, 250, kCmdChooseGauge, choose(QStringLiteral("VDOP")));
  EXPECT_EQ(keyOf(8), u"vdop");
  // As after a restart.
  gaugesPage().setCell(3, nullptr);
  gaugesPage().loadCells();
  EXPECT_EQ(keyOf(3), u"geoid");
  EXPECT_EQ(keyOf(8), u"vdop");
  EXPECT_EQ(keyOf(0), u"speed");
}

TEST_F(GaugesPageTest, OkWithoutSelectionKeepsTheCell) {
  holdAndChoose(5, 5, kCmdChooseGauge, [](QDialog& dialog) {
    gaugeChoiceList(dialog)->clearSelection();
    pressOk(dialog);
    return dialog.result();
  });
  EXPECT_EQ(keyOf(0), u"speed");
  EXPECT_EQ(settings_.readSettingString("Gauge_0", u"<absent>"), u"<absent>");
  EXPECT_EQ(repaints_, 1);  // ended with 1: repainted
}

TEST_F(GaugesPageTest, CancelChangesNothing) {
  holdAndChoose(5, 5, kCmdChooseGauge, [](QDialog& dialog) {
    QTreeWidget* list = gaugeChoiceList(dialog);
    list->clearSelection();
    list->topLevelItem(0)->setSelected(true);
    dialog.findChild<QPushButton*>(QStringLiteral("2"))->click();
    return dialog.result();
  });
  EXPECT_EQ(keyOf(0), u"speed");
  EXPECT_EQ(repaints_, 0);
}

TEST_F(GaugesPageTest, HoldBelowTheGridOpensNoDialog) {
  int runs = 0;
  holdAndChoose(10, 300, kCmdChooseGauge, [&runs](QDialog&) { return ++runs; });
  EXPECT_EQ(runs, 0);
}

TEST_F(GaugesPageTest, InitialSetWritesAllTenCells) {
  holdAndChoose(5, 5, kCmdChooseGauge, choose(QStringLiteral("VDOP")));
  settings_.writeSettingString("Gauge_9", u"hdop");
  gaugesPage().loadCells();
  holdAndChoose(5, 5, kCmdResetGauges);
  const char16_t* expected[] = {u"speed", u"azimuth", u"vspeed", u"elev", u"hdop",
                                u"satellites", u"time", u"power", u"", u""};
  for (int i = 0; i < kGaugeCellCount; ++i) {
    const std::string name = "Gauge_" + std::to_string(i);
    EXPECT_EQ(settings_.readSettingString(name, u"<absent>"), expected[i]) << name;
  }
  EXPECT_EQ(keyOf(0), u"speed");
  EXPECT_EQ(keyOf(9), u"<empty>");
}

}  // namespace
}  // namespace orvel::test
