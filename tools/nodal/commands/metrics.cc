// nodal metrics: the host's figures for monitoring.
#include <algorithm>
#include <memory>

#include "tools/nodal/commands/command.h"
#include "tools/nodal/commands/command_line.h"
#include "tools/nodal/history/history_metrics.h"
#include "tools/nodal/metrics/sampler.h"
#include "tools/nodal/support/output.h"
#include "tools/nodal/support/output_file.h"
#include "tools/nodal/tree/sampled_tree.h"

namespace nodal {
namespace {

struct MetricsOptions {
  std::string prefix = "kestrel_";
  std::vector<std::string> only;
  std::string output;  // empty: standard output
  RangeOptions range = {};
};

bool IsPrefix(std::string_view text) {
  const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':'; };
  return std::ranges::all_of(text, [&](char c) { return isLetter(c) || (c >= '0' && c <= '9'); }) &&
         (text.empty() || isLetter(text[0]));
}

void CheckPrefix(const std::string &prefix) {
  if (!IsPrefix(prefix))
    throw UsageError("--prefix " + prefix, "expected letters, digits, '_' and ':', not starting with a digit");
}

void ShowMetrics(const MetricsOptions &options, const SourceOptions &source) {
  CheckPrefix(options.prefix);
  const std::unique_ptr<Tree> host = OpenTree(source.cache, source.root);
  const std::string text = SampleMetrics(*host, MetricChoice(options.only), options.prefix);
  if (options.output.empty()) {
    Print(text);
  } else {
    WriteFile(options.output, platkit::Readers::kEveryone, text);
  }
}

// Shows the metrics of each sample of a history.
void ShowHistory(const MetricsOptions &options) {
  CheckPrefix(options.prefix);
  const MetricChoice choice(options.only);
  const auto writeTo = [&](const std::function<void(std::string_view)> &print) {
    WriteHistoryMetrics(options.range, choice, options.prefix, print);
  };
  if (options.output.empty()) return writeTo(Print);
  WriteFile(options.output, platkit::Readers::kEveryone, [&](int fd) {
    HVC_ReturnStatus status = HVC_OK;
    writeTo([&](std::string_view text) {
      if (status == HVC_OK) status = WriteAll(fd, text);
    });
    return status;
  });
}

bool HasRange(const RangeOptions &range) { return !range.from.empty() || !range.to.empty() || !range.step.empty(); }

std::string FamiliesText() {
  std::string text = "Families (* shown only with --only):";
  for (const FamilyDescription &family : MetricFamilies())
    text += "\n  " + std::string(family.name) + (family.isStandard ? "  " : "* ") + std::string(family.text);
  return text;
}

}  // namespace

Run DeclareMetrics(OptionSet &options, const SourceOptions &source) {
  const auto values = std::make_shared<MetricsOptions>();
  options.Add("--prefix PREFIX", values->prefix, "Start the metric names with this prefix").ShowDefault();
  options.AddRepeatable("--only NAME", values->only,
                        "Show only this family, or only this metric (give its name without the prefix); repeatable");
  options.Add("-o,--output FILE", values->output, "Write to this file, replacing it atomically").NotEmpty();
  options
      .Add("--from TIME", values->range.from,
           "With --cache FOLDER: show the samples of a history from this time on, as OpenMetrics text with timestamps")
      .NotEmpty();
  options.Add("--to TIME", values->range.to, "With --cache FOLDER: show the samples of a history up to this time")
      .NotEmpty();
  options.Add("--step DURATION", values->range.step, "With --from or --to: show only the first sample of each step")
      .NotEmpty();
  options.SetFooter(FamiliesText());
  return [values, &source] {
    if (HasRange(values->range)) {
      if (source.cache.empty()) throw UsageError("--from, --to and --step need --cache and the folder of a history");
      values->range.folder = source.cache;
      ShowHistory(*values);
      return kSuccess;
    }
    UseSource(source);
    ShowMetrics(*values, source);
    return kSuccess;
  };
}

}  // namespace nodal
