#include "tools/nodal/commands/command.h"

namespace nodal {

// The file with a command's name defines the function that declares its options.
Run DeclareLs(OptionSet &options, const SourceOptions &source);
Run DeclareGet(OptionSet &options, const SourceOptions &source);
Run DeclareMetrics(OptionSet &options, const SourceOptions &source);
Run DeclareCapture(OptionSet &options, const SourceOptions &source);
Run DeclareRecord(OptionSet &options, const SourceOptions &source);
Run DeclareDump(OptionSet &options, const SourceOptions &source);
Run DeclareDiff(OptionSet &options, const SourceOptions &source);
Run DeclareBuild(OptionSet &options, const SourceOptions &source);
Run DeclareVerify(OptionSet &options, const SourceOptions &source);
Run DeclareTop(OptionSet &options, const SourceOptions &source);
Run DeclarePage(OptionSet &options, const SourceOptions &source);
Run DeclareHistory(OptionSet &options, const SourceOptions &source);
Run DeclareSeries(OptionSet &options, const SourceOptions &source);
Run DeclareGuests(OptionSet &options, const SourceOptions &source);

std::span<const Command> Commands() {
  static constexpr Command kCommands[] = {
      {"ls", "List the entries below a path; entries with children end in '/'", DeclareLs},
      {"get", "Show a record or a list", DeclareGet},
      {"metrics", "Show the host's figures as metrics in the Prometheus text format", DeclareMetrics},
      {"capture", "Save the host to a snapshot file", DeclareCapture},
      {"page", "Show a host as one HTML file with its groups, machines and nodes", DeclarePage},
      {"top", "Show a host on the terminal: its groups, machines, nodes and heaps", DeclareTop},
      {"record", "Record a history of the host, with a sample every few seconds", DeclareRecord},
      {"dump", "Show a snapshot as JSON", DeclareDump},
      {"diff", "Compare two snapshots", DeclareDiff, kTrouble},
      {"build", "Build a snapshot from JSON in the format of nodal dump", DeclareBuild},
      {"verify", "Check the files of a snapshot or history, and the references in a snapshot", DeclareVerify},
      {"history", "Summarize a history: its time span, samples, gaps and size", DeclareHistory},
      {"series", "Show figures of a history over time, as CSV or JSON", DeclareSeries},
      {"guests", "Ask the monitors of virtual machines by running nodal-guests with all arguments", DeclareGuests},
  };
  return kCommands;
}

}  // namespace nodal
