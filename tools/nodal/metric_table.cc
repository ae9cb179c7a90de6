#include "tools/nodal/metric_table.h"

#include <algorithm>

namespace nodal {
namespace {

using platkit::Field;
using platkit::RecordLayout;

constexpr FamilyDescription kFamilies[] = {
#define FAMILY(name, labels, standard, text) {MetricFamily::name, #name, labels, standard, text},
#define METRIC(name, type, node, field, help)
#define MADE_METRIC(name, type, labels, help)
#include "tools/nodal/metrics.def"
};

struct Row {
  std::string_view name;
  MetricType type;
  std::string_view help;
  std::string_view node;
  std::string_view field;
  std::string_view labels;
};

constexpr Row kRows[] = {
#define FAMILY(name, labels, standard, text)
#define METRIC(name, type, node, field, help) {#name, MetricType::type, help, #node, #field, ""},
#define MADE_METRIC(name, type, labels, help) {#name, MetricType::type, help, "", "", labels},
#include "tools/nodal/metrics.def"
};

MetricFamily FamilyOf(std::string_view metric) {
  const auto owns = [metric](const FamilyDescription &family) {
    return metric.starts_with(family.name) && metric[family.name.size()] == '_';
  };
  return std::ranges::find_if(kFamilies, owns)->family;
}

const Field *FindField(const RecordLayout &layout, std::string_view name) {
  const auto found = std::ranges::find(layout.fields, name, &Field::name);
  return found == layout.fields.end() ? nullptr : &*found;
}

Metric Resolved(const Row &row) {
  Metric metric = {
      .family = FamilyOf(row.name), .name = row.name, .type = row.type, .help = row.help, .labels = row.labels};
  if (row.node.empty()) return metric;
  metric.node = platkit::FindNode(row.node);
  const size_t dot = row.field.find('.');
  metric.field = FindField(*metric.node->record, row.field.substr(0, dot));
  if (dot != std::string_view::npos) metric.entry = FindField(*metric.field->entry, row.field.substr(dot + 1));
  return metric;
}

}  // namespace

std::span<const FamilyDescription> MetricFamilies() { return kFamilies; }

const FamilyDescription &DescriptionOf(MetricFamily family) { return kFamilies[static_cast<size_t>(family)]; }

const std::vector<Metric> &Metrics() {
  static const std::vector<Metric> metrics = [] {
    std::vector<Metric> resolved;
    std::ranges::transform(kRows, std::back_inserter(resolved), Resolved);
    return resolved;
  }();
  return metrics;
}

}  // namespace nodal
