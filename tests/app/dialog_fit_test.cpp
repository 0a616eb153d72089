// Dialogs take a small screen whole, with their buttons in a bar at the top, and keep their
// natural size inside the main window on a larger one.
#include <QDialog>
#include <QPushButton>
#include <gtest/gtest.h>

#include "app/dialog_fit.h"
#include "app/dialogs.h"
#include "shell_fixture.h"

namespace orvel::test {
namespace {

using DialogFitTest = ShellTest;

TEST_F(DialogFitTest, SmallScreensAreTakenWholeLargerOnesKeepTheNaturalSize) {
  const struct {
    QRect screen, window;
    bool whole;
  } cases[] = {
      {QRect(0, 0, 480, 272), QRect(0, 0, 480, 272), true},
      {QRect(0, 0, 800, 480), QRect(0, 0, 800, 480), true},
      {QRect(0, 0, 1280, 1024), QRect(300, 200, 800, 600), false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.screen.width());
    const std::unique_ptr<QDialog> about = makeAboutDialog(nullptr);
    const QSize natural = about->sizeHint();
    fitDialogToScreen(*about, c.screen, c.window);
    const QWidget* bar = about->findChild<QWidget*>(QStringLiteral("dialogTopBar"));
    ASSERT_EQ(bar != nullptr, c.whole);
    if (c.whole) {
      EXPECT_EQ(about->geometry(), c.screen);
      // "Закрыть" sits in the bar at the top, over the contents that scroll.
      EXPECT_EQ(about->findChild<QPushButton*>(QStringLiteral("2"))->parentWidget()->parentWidget(), bar);
    } else {
      EXPECT_EQ(about->size(), natural);
      EXPECT_TRUE(c.window.contains(about->geometry()));
    }
  }
}

}  // namespace
}  // namespace orvel::test
