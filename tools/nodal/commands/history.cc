// nodal history: what a history holds.
#include <memory>

#include "tools/nodal/commands/command.h"
#include "tools/nodal/history/overview.h"

namespace nodal {

Run DeclareHistory(OptionSet &options, const SourceOptions &) {
  struct HistoryOptions {
    std::string folder;
    bool json = false;
  };
  const auto values = std::make_shared<HistoryOptions>();
  options.Add("folder", values->folder, "The folder of the history").Required();
  options.AddFlag("--json", values->json, "Show JSON");
  return [values] {
    const Timeline timeline = ReadTimeline(values->folder);
    if (values->json) {
      PrintOverviewAsJson(timeline);
    } else {
      PrintOverview(values->folder, timeline);
    }
    return kSuccess;
  };
}

}  // namespace nodal
