#include "tools/nodal/history/series.h"

#include <algorithm>
#include <map>
#include <unordered_map>

#include "platkit/history/moment.h"
#include "platkit/path.h"
#include "tools/nodal/history/figure.h"
#include "tools/nodal/history/series_printer.h"
#include "tools/nodal/support/text.h"

namespace nodal {
namespace {

using platkit::history::Entry;
using platkit::history::Sample;

// A figure at one path.
struct PathFigure {
  std::string name;
  FigureField field;
};

struct PathFigures {
  size_t recordBytes = 0;
  std::vector<PathFigure> figures = {};
};

class Series {
 public:
  Series(const SeriesOptions &options, std::vector<FigurePattern> patterns)
      : patterns_(std::move(patterns)),
        step_(StepOption(options.step)),
        printer_(MakeSeriesPrinter(options.json, step_ > 0)) {}

  void Show(HistoryRange &range) {
    const FigureFilter filter(patterns_);
    printer_->Begin();
    range.Visit(&filter, [this](const auto &info, const Sample &sample, const auto &) {
      AddSample(platkit::history::SecondsOf(info.time.wall), sample);
    });
    EndStep();
    printer_->End();
  }

  bool hasFigures() const { return !figures_.empty(); }

 private:
  void AddSample(int64_t second, const Sample &sample) {
    const int64_t time = step_ == 0 ? second : second - second % step_;
    if (step_ == 0 || time != time_) EndStep();
    time_ = time;
    for (size_t i = 0; i < sample.size(); ++i) {
      const Entry entry = sample[i];
      const PathFigures &known = FiguresOf(entry);
      // Samples of another version may have records of other sizes.
      if (entry.payload.size() != known.recordBytes) continue;
      for (const PathFigure &figure : known.figures)
        AddNumber(figure, figure.field.Read(entry.payload));
    }
  }

  void AddNumber(const PathFigure &figure, std::optional<uint64_t> number) {
    if (step_ == 0) return printer_->ShowValue(time_, figure.name, number ? figure.field.Text(*number) : "");
    StepFigures &step = steps_[figure.name];
    step.field = &figure.field;
    if (!number) return;
    const uint64_t ordered = figure.field.Ordered(*number);
    step.least = step.count == 0 ? ordered : std::min(step.least, ordered);
    step.largest = step.count == 0 ? ordered : std::max(step.largest, ordered);
    step.last = ordered;
    ++step.count;
  }

  void EndStep() {
    for (const auto &[name, step] : steps_) {
      const auto text = [field = step.field](uint64_t ordered) { return field->Text(field->Ordered(ordered)); };
      const bool hasValues = step.count > 0;
      printer_->ShowStep(time_, name,
                         {.samples = step.count,
                          .least = hasValues ? text(step.least) : "",
                          .largest = hasValues ? text(step.largest) : "",
                          .last = hasValues ? text(step.last) : ""});
    }
    steps_.clear();
  }

  // Returns the figures of an entry's path. Looks them up only once.
  const PathFigures &FiguresOf(const Entry &entry) {
    const auto known = figures_.find(entry.key);
    if (known != figures_.end()) return known->second;
    PathFigures &found = figures_[std::string(entry.key)];
    const platkit::PathTarget target = platkit::ParsePath(entry.key);
    if (target.node == nullptr || !target.asRecord) return found;
    found.recordBytes = target.node->record->size;
    for (const FigurePattern &pattern : patterns_) {
      const std::optional<FigureField> field = FindField(*target.node->record, pattern.field());
      if (field && pattern.Matches(entry.key))
        found.figures.push_back({std::string(entry.key) + "." + pattern.field(), *field});
    }
    return found;
  }

  struct StepFigures {
    const FigureField *field = nullptr;
    size_t count = 0;
    uint64_t least = 0;
    uint64_t largest = 0;
    uint64_t last = 0;
  };

  struct HashText {
    using is_transparent = void;
    size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };

  const std::vector<FigurePattern> patterns_;
  const int64_t step_;  // in seconds; 0: every sample
  const std::unique_ptr<SeriesPrinter> printer_;
  std::unordered_map<std::string, PathFigures, HashText, std::equal_to<>> figures_;
  std::map<std::string_view, StepFigures> steps_;
  int64_t time_ = 0;
};

}  // namespace

void ShowSeries(const SeriesOptions &options) {
  std::vector<FigurePattern> patterns(options.figures.begin(), options.figures.end());
  HistoryRange range(options.range);
  Series series(options, std::move(patterns));
  series.Show(range);
  if (!series.hasFigures()) throw Failure(options.range.folder, "no sample in the range contains any of the figures");
}

}  // namespace nodal
