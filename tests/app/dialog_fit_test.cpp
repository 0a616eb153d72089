// On a larger screen a dialog keeps its natural size inside the main window, without the bar
// of buttons at the top that small screens get (those are driven on real small screens by
// the screens test).
#include <QDialog>
#include <gtest/gtest.h>

#include "app/dialog_fit.h"
#include "app/dialogs.h"
#include "shell_fixture.h"

namespace orvel::test {
namespace {

using DialogFitTest = ShellTest;

TEST_F(DialogFitTest, LargerScreensKeepTheNaturalSize) {
  const QRect window(300, 200, 800, 600);
  const std::unique_ptr<QDialog> about = makeAboutDialog(nullptr);
  const QSize natural = about->sizeHint();
  fitDialogToScreen(*about, QRect(0, 0, 1280, 1024), window);
  EXPECT_EQ(about->findChild<QWidget*>(QStringLiteral("dialogTopBar")), nullptr);
  EXPECT_EQ(about->size(), natural);
  EXPECT_TRUE(window.contains(about->geometry()));
}

}  // namespace
}  // namespace orvel::test
