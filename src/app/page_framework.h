#pragma once
// The fixed list of pages, the current one, and switching between them. The current page
// is kept in the setting "Page", written at every change.
#include <array>
#include <cstdint>
#include <memory>

#include "pages/page.h"
#include "pages/page_context.h"

namespace orvel {

class CompassPage;
class GaugesPage;
class MainWindow;
class MapPage;
class SatellitesPage;
class Session;

inline constexpr uint32_t kPageCount = 3;

class PageSet {
 public:
  // Makes the pages; they draw through `host` and read what they show from the session.
  PageSet(const PageContext& context, Session& session);
  ~PageSet();
  PageSet(const PageSet&) = delete;
  PageSet& operator=(const PageSet&) = delete;

  // map, gauges, satellites, in this order. The compass page is not listed.
  const std::array<Page*, kPageCount>& pageList() const { return list_; }
  Page& currentPage() const { return *list_[pageIndex_]; }
  uint32_t currentPageIndex() const { return pageIndex_; }
  MapPage& mapPage() const { return *map_; }
  GaugesPage& gaugesPage() const { return *gauges_; }
  SatellitesPage& satellitesPage() const { return *satellites_; }
  CompassPage& compassPage() const { return *compass_; }

  // Initialises every page, appends the page entries to the window's "Вид" menu and makes
  // the stored page current. Called once the window and its menu bar exist.
  void initPages(MainWindow& window);
  void shutdownPages();
  // False before initPages and after shutdownPages: no page may be called then.
  bool pagesReady() const { return window_ != nullptr; }

  // Menu commands 2000..2009; indexes naming no page are ignored.
  void selectPage(uint32_t index);
  void nextPage();
  void previousPage();
  // Brings the menu marks, the zoom items, the window title and the "Page" setting in line
  // with the current page.
  void refreshPageUi();

 private:
  PageContext context_;
  std::unique_ptr<MapPage> map_;
  std::unique_ptr<GaugesPage> gauges_;
  std::unique_ptr<SatellitesPage> satellites_;
  std::unique_ptr<CompassPage> compass_;
  std::array<Page*, kPageCount> list_{};
  uint32_t pageIndex_ = 0;
  MainWindow* window_ = nullptr;
};

}  // namespace orvel
