#pragma once
// The fixed list of pages, the current one, and switching between them. The current page
// is kept in the setting "Page", written at every change.
#include <array>
#include <cstdint>

#include "pages/page.h"

namespace orvel {

class MainWindow;

inline constexpr uint32_t kPageCount = 3;

// map, gauges, satellites, in this order. The compass page is not listed.
const std::array<Page*, kPageCount>& pageList();
Page& currentPage();
uint32_t currentPageIndex();

// Initialises every page, appends the page entries to the window's "Вид" menu and makes the
// stored page current. Called once the window and its menu bar exist.
void initPages(MainWindow& window);
void shutdownPages();
// False before initPages and after shutdownPages: no page may be called then.
bool pagesReady();

// Menu commands 2000..2009; indexes naming no page are ignored.
void selectPage(uint32_t index);
void nextPage();
void previousPage();
// Brings the menu marks, the zoom items, the window title and the "Page" setting in line
// with the current page.
void refreshPageUi();

}  // namespace orvel
