#include "tools/nodal/metrics/metrics_page.h"

#include "tools/nodal/metrics/metric_table.h"

namespace nodal {
namespace {

constexpr std::string_view kFirstHeading = "\n## ";

// Returns `a`, `b` for "a, b".
std::string Code(std::string_view labels) {
  std::string code = "`";
  for (const char c : labels)
    code += c == ',' ? "`" : c == ' ' ? ", `" : std::string(1, c);
  return code + "`";
}

std::string Heading(const FamilyDescription &family) {
  const std::string name(family.name);
  std::string text = "\n## " + name + "\n\n" + std::string(family.text) + "\n\n";
  text += family.labels.empty() ? "No labels." : "Labels: " + Code(family.labels) + ".";
  if (!family.isStandard) text += " Shown only with `--only " + name + "`.";
  return text + "\n\n| metric | type | meaning | from |\n|---|---|---|---|\n";
}

std::string Origin(const Metric &metric) {
  if (metric.node() == nullptr) return "";
  std::string field(metric.field()->name);
  if (metric.entryField() != nullptr) field += "." + std::string(metric.entryField()->name);
  return "`" + std::string(metric.node()->path) + "` " + field + " ";
}

std::string Row(const Metric &metric) {
  const std::string labels = metric.labels.empty() ? "" : " Labels: " + Code(metric.labels) + ".";
  return "| `kestrel_" + std::string(metric.name) + "` | " +
         (metric.type == MetricType::kCounter ? "counter" : "gauge") + " | " + std::string(metric.help) + labels +
         " | " + Origin(metric) + "|\n";
}

}  // namespace

std::string RegeneratedMetricsPage(std::string_view page) {
  std::string text(page.substr(0, page.find(kFirstHeading)));
  for (const FamilyDescription &family : MetricFamilies()) {
    text += Heading(family);
    for (const Metric &metric : Metrics()) {
      if (metric.family == family.family) text += Row(metric);
    }
  }
  return text;
}

}  // namespace nodal
