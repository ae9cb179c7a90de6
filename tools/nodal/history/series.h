// Figures over time.
#ifndef NODAL_HISTORY_SERIES_H
#define NODAL_HISTORY_SERIES_H

#include <string>
#include <vector>

#include "tools/nodal/history/history_range.h"

namespace nodal {

struct SeriesOptions {
  RangeOptions range;
  std::vector<std::string> figures;
  std::string step = {};  // such as 10s; empty: every sample
  bool json = false;
};

// Prints the figures of each sample, or the smallest, largest and last value of each figure in each step. Throws a
// Failure.
void ShowSeries(const SeriesOptions &options);

}  // namespace nodal

#endif  // NODAL_HISTORY_SERIES_H
