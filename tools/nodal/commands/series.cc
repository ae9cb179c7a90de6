// nodal series: figures of a history over time.
#include "tools/nodal/history/series.h"

#include <memory>

#include "tools/nodal/commands/command.h"

namespace nodal {

Run DeclareSeries(OptionSet &options, const SourceOptions &) {
  const auto values = std::make_shared<SeriesOptions>();
  options.Add("folder", values->range.folder, "The folder of the history").Required();
  options
      .AddRepeatable(
          "figure", values->figures,
          "PATH.FIELD, such as /sched/groups/*/stats/memoryStats.consumed; * stands for any characters but /")
      .Required();
  options.Add("--from TIME", values->range.from, "Start at this time (default: the start of the history)").NotEmpty();
  options.Add("--to TIME", values->range.to, "End at this time (default: the end of the history)").NotEmpty();
  options
      .Add("--step DURATION", values->step,
           "Show the smallest, largest and last value of each step, such as 10s, 5m, 1h or 1d")
      .NotEmpty();
  options.AddFlag("--json", values->json, "Show JSON instead of CSV");
  return [values] {
    ShowSeries(*values);
    return kSuccess;
  };
}

}  // namespace nodal
