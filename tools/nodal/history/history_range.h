// The samples of a history between two times.
#ifndef NODAL_HISTORY_HISTORY_RANGE_H
#define NODAL_HISTORY_HISTORY_RANGE_H

#include <functional>
#include <string>

#include "platkit/history/sample_table.h"
#include "tools/nodal/history/moment_file.h"

namespace nodal {

// The times are texts, as on the command line. An empty `from` or `to` is the start or the end of the history.
struct RangeOptions {
  std::string folder;
  std::string from = {};
  std::string to = {};
  std::string step = {};      // such as 1m: only the first sample of each step; empty: all samples
  bool isQuiet = false;       // print no message about damage
  bool lastOfSecond = false;  // visit only the last sample of each second, which is the one that DIR@TIME shows
};

class HistoryRange {
 public:
  // Opens the history. Throws a Failure if it cannot be opened or an option is invalid.
  explicit HistoryRange(const RangeOptions &options);

  // The start and the end of the range, in seconds since 1970.
  int64_t from() const { return from_; }
  int64_t to() const { return to_; }

  using Visitor = std::function<void(const platkit::history::SampleInfo &info, const platkit::history::Sample &sample,
                                     const platkit::history::HostHeader &host)>;

  // Calls the visitor for each sample of the range, in the order of time. With a filter, the samples contain only the
  // selected entries, and are read much faster. Unless isQuiet is set, prints to standard error how many samples were
  // damaged. Throws a Failure.
  void Visit(const platkit::history::KeyFilter *filter, const Visitor &visitor);

 private:
  void VisitSegment(const platkit::history::KeyFilter *filter, platkit::history::SegmentName name,
                    const Visitor &visitor);

  std::string folder_;
  platkit::history::History history_;
  int64_t from_;
  int64_t to_;
  int64_t step_;  // in seconds; 0: all samples
  bool lastOfSecond_;
  bool isQuiet_;
  int64_t lastStep_ = -1;
  size_t lost_ = 0;
  size_t damagedParts_ = 0;
};

// Parses the value of --step, such as 10s, to seconds. Returns 0 for an empty text. Throws a UsageError if the text is
// invalid.
int64_t StepOption(const std::string &text);

}  // namespace nodal

#endif  // NODAL_HISTORY_HISTORY_RANGE_H
