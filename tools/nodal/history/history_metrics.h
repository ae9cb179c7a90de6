// The metrics of a history, with their times.
#ifndef NODAL_HISTORY_HISTORY_METRICS_H
#define NODAL_HISTORY_HISTORY_METRICS_H

#include <functional>
#include <string>
#include <string_view>

#include "tools/nodal/history/history_range.h"
#include "tools/nodal/metrics/sampler.h"

namespace nodal {

// Writes, as OpenMetrics text, the metrics of each sample of a history, or of the first sample in each step. Throws a
// Failure.
void WriteHistoryMetrics(const RangeOptions &range, const MetricChoice &choice, const std::string &prefix,
                         const std::function<void(std::string_view text)> &write);

}  // namespace nodal

#endif  // NODAL_HISTORY_HISTORY_METRICS_H
