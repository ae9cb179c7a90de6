// Samples in Prometheus' text format.
#ifndef NODAL_METRICS_PROMETHEUS_TEXT_H
#define NODAL_METRICS_PROMETHEUS_TEXT_H

#include <string>
#include <string_view>

#include "tools/nodal/metrics/metric_sink.h"

namespace nodal {

class PrometheusText : public MetricSink {
 public:
  explicit PrometheusText(std::string_view prefix) : prefix_(prefix) {}

  // A metric without samples is omitted.
  void Begin(const Metric &metric) override { metric_ = &metric, isDescribed_ = false; }

  void AddSample(const Labels &labels, double value) override;

  const std::string &text() const { return text_; }

 private:
  std::string prefix_;
  const Metric *metric_ = nullptr;
  bool isDescribed_ = false;
  std::string text_;
};

}  // namespace nodal

#endif  // NODAL_METRICS_PROMETHEUS_TEXT_H
