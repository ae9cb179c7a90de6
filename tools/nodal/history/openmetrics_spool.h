// Collects samples of many times, and writes them as OpenMetrics text, in which all samples of a metric are adjacent.
#ifndef NODAL_HISTORY_OPENMETRICS_SPOOL_H
#define NODAL_HISTORY_OPENMETRICS_SPOOL_H

#include <cstdint>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "tools/nodal/metrics/metric_sink.h"

namespace nodal {

// Writes the samples of each metric to a temporary file without a name. AddSample and WriteTo throw a Failure.
class OpenMetricsSpool : public MetricSink {
 public:
  explicit OpenMetricsSpool(std::string prefix) : prefix_(std::move(prefix)) {}

  // Sets the time of the next samples, in milliseconds since 1970.
  void SetTime(int64_t millis);

  void Begin(const Metric &metric) override { metric_ = &metric; }
  void AddSample(const Labels &labels, double value) override;

  // Passes the text to `write`, part by part.
  void WriteTo(const std::function<void(std::string_view text)> &write);

 private:
  struct CloseFile {
    void operator()(std::FILE *file) const { std::fclose(file); }
  };
  using File = std::unique_ptr<std::FILE, CloseFile>;

  std::string Description(const Metric &metric) const;

  const std::string prefix_;
  std::string time_;
  const Metric *metric_ = nullptr;
  std::map<const Metric *, File> files_;  // in the order of the table of metrics
};

}  // namespace nodal

#endif  // NODAL_HISTORY_OPENMETRICS_SPOOL_H
