#pragma once
// The pages besides the map: gauges and satellites (listed in the page menu) and the compass
// (defined, never listed).
#include "pages/compass_page.h"
#include "pages/gauges_page.h"
#include "pages/satellites_page.h"
