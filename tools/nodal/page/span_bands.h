// The smallest and largest values of figures in each step of a span.
#ifndef NODAL_PAGE_SPAN_BANDS_H
#define NODAL_PAGE_SPAN_BANDS_H

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platkit/catalogue.h"
#include "tools/nodal/history/history_range.h"
#include "tools/nodal/page/figure_budget.h"
#include "tools/nodal/support/progress.h"

namespace nodal {

// Returns the name of the field that has a band in a node's record, or "" if there is none.
std::string_view FieldWithBand(const platkit::Node &node);

class SpanBands {
 public:
  struct Band {
    int64_t step;
    int64_t least;
    int64_t largest;
  };

  // Reads the figures from all samples of the range. `step` is the length of a step in seconds. Advances the progress
  // with each sample. Throws a Failure.
  SpanBands(HistoryRange &range, int64_t step, FigureBudget &budget, Progress &progress);

  // Returns the band of the record at a path in a step, or null if there is none. `step` is the number of steps since
  // 1970.
  const Band *Find(std::string_view path, int64_t step) const;

  size_t samples() const { return samples_; }

 private:
  struct HashText {
    using is_transparent = void;
    size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };

  // The bands of one path.
  struct Series {
    const platkit::Node *node = nullptr;
    const platkit::Field *field = nullptr;
    std::vector<Band> bands = {};
  };

  using PathSeries = std::pair<const std::string, Series>;

  void AddSample(const platkit::history::Sample &sample, int64_t step);
  void AddValue(Series &series, int64_t step, int64_t value);
  PathSeries &SeriesOf(std::string_view path);

  FigureBudget &budget_;
  size_t samples_ = 0;
  std::unordered_map<std::string, Series, HashText, std::equal_to<>> series_;
  std::vector<PathSeries *> inOrder_;  // the series of each entry in the last sample
};

}  // namespace nodal

#endif  // NODAL_PAGE_SPAN_BANDS_H
