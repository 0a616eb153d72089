#include "app/page_framework.h"

#include "core/settings.h"
#include "app/main_window.h"
#include "pages/info_pages.h"
#include "pages/commands.h"
#include "pages/map_page.h"
#include "pages/page_host.h"

namespace orvel {

namespace {

uint32_t pageIndex = 0;
MainWindow* window = nullptr;

}  // namespace

const std::array<Page*, kPageCount>& pageList() {
  static const std::array<Page*, kPageCount> list{&mapPage(), &gaugesPage(), &satellitesPage()};
  return list;
}

Page& currentPage() { return *pageList()[pageIndex]; }

uint32_t currentPageIndex() { return pageIndex; }

bool pagesReady() { return window != nullptr; }

void initPages(MainWindow& mainWindow) {
  for (Page* page : pageList()) page->initialize();
  window = &mainWindow;
  for (uint32_t i = 0; i < kPageCount; ++i) {
    mainWindow.appendPageItem(pageList()[i]->getTitle(), static_cast<int>(kCmdFirstPage + i));
  }
  // Only the program writes "Page", and only 0..2; anything else (a hand-edited file) would
  // name no page and starts on the map.
  const int32_t stored = readSettingInt("Page", 0);
  pageIndex = (stored >= 0 && static_cast<uint32_t>(stored) < kPageCount) ? uint32_t(stored) : 0;
  refreshPageUi();
}

void shutdownPages() {
  if (!window) return;
  currentPage().deactivate();
  for (Page* page : pageList()) page->shutdown();
  window = nullptr;
}

void refreshPageUi() {
  Page& page = currentPage();
  page.activate();
  if (window) {
    window->setPageTitle(page.getTitle());
    window->checkPageItem(static_cast<int>(kCmdFirstPage + pageIndex));
    window->enableZoomItems(page.canZoom());
  }
  writeSettingInt("Page", static_cast<int32_t>(pageIndex));
}

void selectPage(uint32_t index) {
  if (index >= kPageCount || index == pageIndex) return;
  currentPage().deactivate();
  pageIndex = index;
  refreshPageUi();
  invalidateMainWindow();
}

void nextPage() {
  currentPage().deactivate();
  pageIndex = (pageIndex + 1 == kPageCount) ? 0 : pageIndex + 1;
  refreshPageUi();
  invalidateMainWindow();
}

void previousPage() {
  currentPage().deactivate();
  pageIndex = (pageIndex == 0) ? kPageCount - 1 : pageIndex - 1;
  refreshPageUi();
  invalidateMainWindow();
}

}  // namespace orvel
