// Samples in Prometheus' text format.
#ifndef NODAL_METRICS_PROMETHEUS_TEXT_H
#define NODAL_METRICS_PROMETHEUS_TEXT_H

#include <string>
#include <string_view>

#include "tools/nodal/metrics/metric_table.h"

namespace nodal {

// `name="value"` pairs, separated by commas. A label without a value is omitted.
class Labels {
 public:
  Labels &Add(std::string_view name, std::string_view value);

  const std::string &text() const { return text_; }

 private:
  std::string text_;
};

// Escaped for the quotes of a label. Control characters, and bytes that are not UTF-8, become \x and two hexadecimal
// digits.
std::string LabelValue(std::string_view text);

// The shortest decimal number without exponent that reads back as the same value.
std::string NumberText(double value);

class PrometheusText {
 public:
  explicit PrometheusText(std::string_view prefix) : prefix_(prefix) {}

  // The next samples belong to that metric. A metric without samples is omitted.
  void Begin(const Metric &metric) { metric_ = &metric, isDescribed_ = false; }

  void AddSample(const Labels &labels, double value);

  const std::string &text() const { return text_; }

 private:
  std::string prefix_;
  const Metric *metric_ = nullptr;
  bool isDescribed_ = false;
  std::string text_;
};

}  // namespace nodal

#endif  // NODAL_METRICS_PROMETHEUS_TEXT_H
