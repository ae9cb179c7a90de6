// Serves the last sample of a recorder as metrics.
#ifndef NODAL_HISTORY_METRICS_ENDPOINT_H
#define NODAL_HISTORY_METRICS_ENDPOINT_H

#include <memory>
#include <optional>
#include <string>

#include "tools/nodal/history/http_server.h"
#include "tools/nodal/history/recorder.h"

namespace nodal {

// /metrics has the figures of the last sample, in Prometheus' text format. The answer to /healthz is a
// failure if the last sample was not written, or if the last written sample is too old: older than three intervals and
// older than ten seconds. A request reads nothing from the kernel.
class MetricsEndpoint {
 public:
  // The recorder and its pace must outlive the endpoint. Throws a Failure if the address cannot be used.
  MetricsEndpoint(const std::string &address, const Recorder &recorder, Pace &pace, int64_t interval);

  HttpServer &server() { return server_; }

  // Returns the answer to a request for this path.
  HttpResponse Answer(std::string_view path);

 private:
  HttpResponse Metrics();
  HttpResponse Health();

  const Recorder &recorder_;
  Pace &pace_;
  int64_t interval_;
  // The cached answer to /metrics, and the time of its sample.
  std::optional<platkit::history::SampleTime> textTime_;
  std::shared_ptr<const std::string> text_;
  HttpServer server_;
};

}  // namespace nodal

#endif  // NODAL_HISTORY_METRICS_ENDPOINT_H
