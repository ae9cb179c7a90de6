// nodal metrics: the host's figures for monitoring.
#include <algorithm>
#include <memory>

#include "tools/nodal/commands/command.h"
#include "tools/nodal/metrics/sampler.h"
#include "tools/nodal/support/output.h"
#include "tools/nodal/support/output_file.h"

namespace nodal {
namespace {

struct MetricsOptions {
  std::string prefix = "kestrel_";
  std::vector<std::string> only;
  std::string output;  // empty: standard output
};

bool IsPrefix(std::string_view text) {
  const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':'; };
  return std::ranges::all_of(text, [&](char c) { return isLetter(c) || (c >= '0' && c <= '9'); }) &&
         (text.empty() || isLetter(text[0]));
}

void ShowMetrics(const MetricsOptions &options) {
  if (!IsPrefix(options.prefix))
    throw Failure("--prefix " + options.prefix, "expected letters, digits, '_' and ':', without a digit first");
  HostTree host;
  const std::string text = SampleMetrics(host, MetricChoice(options.only), options.prefix);
  if (options.output.empty()) {
    Print(text);
  } else {
    WriteFile(options.output, platkit::Readers::kEveryone, text);
  }
}

std::string FamiliesText() {
  std::string text = "Families (* only with --only):";
  for (const FamilyDescription &family : MetricFamilies())
    text += "\n  " + std::string(family.name) + (family.isStandard ? "  " : "* ") + std::string(family.text);
  return text;
}

}  // namespace

Run DeclareMetrics(OptionSet &options, const SourceOptions &source) {
  const auto values = std::make_shared<MetricsOptions>();
  options.Add("--prefix PREFIX", values->prefix, "Start the metric names with this prefix").ShowDefault();
  options.AddRepeatable("--only NAME", values->only,
                        "Show only this family, or this metric (its name without the prefix); repeatable");
  options.Add("-o,--output FILE", values->output, "Write to this file, replacing it atomically").NotEmpty();
  options.SetFooter(FamiliesText());
  return [values, &source] {
    UseSource(source);
    ShowMetrics(*values);
    return kSuccess;
  };
}

}  // namespace nodal
