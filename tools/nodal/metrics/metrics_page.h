// The tables of docs/metrics.md.
#ifndef NODAL_METRICS_METRICS_PAGE_H
#define NODAL_METRICS_METRICS_PAGE_H

#include <string>
#include <string_view>

namespace nodal {

// The page with the same introduction, and the current families and metrics after it.
std::string RegeneratedMetricsPage(std::string_view page);

}  // namespace nodal

#endif  // NODAL_METRICS_METRICS_PAGE_H
