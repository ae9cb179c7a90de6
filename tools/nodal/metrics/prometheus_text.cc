#include "tools/nodal/metrics/prometheus_text.h"

namespace nodal {

void PrometheusText::AddSample(const Labels &labels, double value) {
  const std::string name = prefix_ + std::string(metric_->name);
  if (!isDescribed_) {
    text_ += "# HELP " + name + " " + std::string(metric_->help) + "\n";
    text_ += "# TYPE " + name + (metric_->type == MetricType::kCounter ? " counter\n" : " gauge\n");
    isDescribed_ = true;
  }
  text_ += name;
  if (!labels.text().empty()) text_ += "{" + labels.text() + "}";
  text_ += " " + NumberText(value) + "\n";
}

}  // namespace nodal
