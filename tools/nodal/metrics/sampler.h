// The figures of a host as metrics.
#ifndef NODAL_METRICS_SAMPLER_H
#define NODAL_METRICS_SAMPLER_H

#include <set>
#include <string>
#include <vector>

#include "tools/nodal/metrics/metric_sink.h"
#include "tools/nodal/tree/tree.h"

namespace nodal {

// The metrics that are shown.
class MetricChoice {
 public:
  // `only` contains names of families and metrics; if it is empty, the standard families are chosen. Throws a
  // UsageError for an unknown name.
  explicit MetricChoice(const std::vector<std::string> &only);

  bool Contains(const Metric &metric) const;

 private:
  std::set<std::string> only_;
};

// Returns the samples of the chosen metrics, in Prometheus' text format. Does not read the nodes of other metrics.
std::string SampleMetrics(Tree &host, const MetricChoice &choice, const std::string &prefix);

// Adds the same samples to `sink`.
void SampleMetrics(Tree &host, const MetricChoice &choice, MetricSink &sink);

}  // namespace nodal

#endif  // NODAL_METRICS_SAMPLER_H
