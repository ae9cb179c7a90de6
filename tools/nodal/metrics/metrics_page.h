// The tables of docs/metrics.md.
#ifndef NODAL_METRICS_METRICS_PAGE_H
#define NODAL_METRICS_METRICS_PAGE_H

#include <string>
#include <string_view>

namespace nodal {

// Returns the page with its introduction unchanged and with the current families and metrics.
std::string RegeneratedMetricsPage(std::string_view page);

}  // namespace nodal

#endif  // NODAL_METRICS_METRICS_PAGE_H
