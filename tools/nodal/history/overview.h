// nodal history: prints the span, size, days and events of a history.
#ifndef NODAL_HISTORY_OVERVIEW_H
#define NODAL_HISTORY_OVERVIEW_H

#include <string>

#include "tools/nodal/history/timeline.h"

namespace nodal {

void PrintOverview(const std::string &folder, const Timeline &timeline);
void PrintOverviewAsJson(const Timeline &timeline);

}  // namespace nodal

#endif  // NODAL_HISTORY_OVERVIEW_H
