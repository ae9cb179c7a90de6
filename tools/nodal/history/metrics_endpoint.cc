#include "tools/nodal/history/metrics_endpoint.h"

#include <algorithm>

#include "platkit/history/history_source.h"
#include "tools/nodal/metrics/sampler.h"
#include "tools/nodal/support/text.h"

namespace nodal {
namespace {

using platkit::history::kNanosInSecond;

constexpr char kPrefix[] = "kestrel_";

HttpResponse TextResponse(int status, std::string text) {
  return {.status = status, .body = std::make_shared<const std::string>(std::move(text))};
}

}  // namespace

MetricsEndpoint::MetricsEndpoint(const std::string &address, const Recorder &recorder, Pace &pace, int64_t interval)
    : recorder_(recorder),
      pace_(pace),
      interval_(interval),
      server_(address, [this](std::string_view path) { return Answer(path); }) {}

HttpResponse MetricsEndpoint::Answer(std::string_view path) {
  if (path == "/metrics") return Metrics();
  if (path == "/healthz") return Health();
  return TextResponse(404, "Not found. This server serves only /metrics and /healthz.\n");
}

// All clients share the text of a sample.
HttpResponse MetricsEndpoint::Metrics() {
  const auto &time = recorder_.lastTime();
  if (!time) return TextResponse(503, "No sample has been written yet.\n");
  if (textTime_ != time) {
    platkit::SampleSource sample(recorder_.last(), platkit::OwnDefinitions());
    SourceTree tree(sample);
    text_ = std::make_shared<const std::string>(SampleMetrics(tree, MetricChoice({}), kPrefix));
    textTime_ = time;
  }
  return {.type = "text/plain; version=0.0.4; charset=utf-8", .lastModified = HttpDate(time->wall), .body = text_};
}

HttpResponse MetricsEndpoint::Health() {
  const auto &time = recorder_.lastTime();
  if (recorder_.status() != HVC_OK)
    return TextResponse(503, "The last sample could not be written: " + StatusText(recorder_.status()) + "\n");
  const int64_t now = pace_.Now().monotonic;
  const int64_t patience = std::max(3 * interval_, 10 * kNanosInSecond);
  if (!time || now - time->monotonic > patience) return TextResponse(503, "No sample was written recently.\n");
  return TextResponse(200, "ok\n");
}

}  // namespace nodal
