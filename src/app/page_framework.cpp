#include "app/page_framework.h"

#include "app/main_window.h"
#include "app/session.h"
#include "core/settings.h"
#include "pages/commands.h"
#include "pages/info_pages.h"
#include "pages/map_page.h"
#include "pages/page_host.h"

namespace orvel {

PageSet::PageSet(const PageContext& context, Session& session)
    : context_(context),
      map_(std::make_unique<MapPage>(context, session.view, session.map)),
      gauges_(std::make_unique<GaugesPage>(context)),
      satellites_(std::make_unique<SatellitesPage>(context)),
      compass_(std::make_unique<CompassPage>(context)),
      list_{map_.get(), gauges_.get(), satellites_.get()} {}

PageSet::~PageSet() = default;

void PageSet::initPages(MainWindow& mainWindow) {
  for (Page* page : list_) page->initialize();
  window_ = &mainWindow;
  for (uint32_t i = 0; i < kPageCount; ++i) {
    mainWindow.appendPageItem(list_[i]->getTitle(), static_cast<int>(kCmdFirstPage + i));
  }
  // Only the program writes "Page", and only 0..2; anything else (a hand-edited file) would
  // name no page and starts on the map.
  const int32_t stored = context_.settings.readSettingInt("Page", 0);
  pageIndex_ = (stored >= 0 && static_cast<uint32_t>(stored) < kPageCount) ? uint32_t(stored) : 0;
  refreshPageUi();
}

void PageSet::shutdownPages() {
  if (!window_) return;
  currentPage().deactivate();
  for (Page* page : list_) page->shutdown();
  window_ = nullptr;
}

void PageSet::refreshPageUi() {
  Page& page = currentPage();
  page.activate();
  if (window_) {
    window_->setPageTitle(page.getTitle());
    window_->checkPageItem(static_cast<int>(kCmdFirstPage + pageIndex_));
    window_->enableZoomItems(page.canZoom());
  }
  context_.settings.writeSettingInt("Page", static_cast<int32_t>(pageIndex_));
}

void PageSet::selectPage(uint32_t index) {
  if (index >= kPageCount || index == pageIndex_) return;
  currentPage().deactivate();
  pageIndex_ = index;
  refreshPageUi();
  context_.host.invalidateMainWindow();
}

void PageSet::nextPage() {
  currentPage().deactivate();
  pageIndex_ = (pageIndex_ + 1 == kPageCount) ? 0 : pageIndex_ + 1;
  refreshPageUi();
  context_.host.invalidateMainWindow();
}

void PageSet::previousPage() {
  currentPage().deactivate();
  pageIndex_ = (pageIndex_ == 0) ? kPageCount - 1 : pageIndex_ - 1;
  refreshPageUi();
  context_.host.invalidateMainWindow();
}

}  // namespace orvel
