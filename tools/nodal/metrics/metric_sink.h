// Receives the samples of metrics.
#ifndef NODAL_METRICS_METRIC_SINK_H
#define NODAL_METRICS_METRIC_SINK_H

#include "tools/nodal/metrics/labels.h"
#include "tools/nodal/metrics/metric_table.h"

namespace nodal {

class MetricSink {
 public:
  virtual ~MetricSink() = default;

  // Starts a metric: the next samples belong to it.
  virtual void Begin(const Metric &metric) = 0;

  virtual void AddSample(const Labels &labels, double value) = 0;
};

}  // namespace nodal

#endif  // NODAL_METRICS_METRIC_SINK_H
