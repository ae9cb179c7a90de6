#include "tools/nodal/history/history_metrics.h"

#include "platkit/history/history_source.h"
#include "tools/nodal/history/openmetrics_spool.h"
#include "tools/nodal/support/text.h"

namespace nodal {

void WriteHistoryMetrics(const RangeOptions &range, const MetricChoice &choice, const std::string &prefix,
                         const std::function<void(std::string_view text)> &write) {
  HistoryRange history(range);
  OpenMetricsSpool spool(prefix);
  int64_t last = INT64_MIN;
  size_t others = 0;
  history.Visit(nullptr, [&](const auto &info, const auto &sample, const auto &host) {
    const int64_t millis = info.time.wall / 1'000'000;
    if (millis <= last) return;  // the times of a metric's samples must increase
    last = millis;
    // Samples of another version may have records of other sizes.
    if (!HaveOwnSignature(host.definitions)) {
      ++others;
      return;
    }
    platkit::SampleSource source(sample, host.definitions);
    SourceTree tree(source);
    spool.SetTime(millis);
    SampleMetrics(tree, choice, spool);
  });
  if (others > 0) Complain(range.folder + ": left out " + Plural(others, "sample") + " of another version");
  spool.WriteTo(write);
}

}  // namespace nodal
