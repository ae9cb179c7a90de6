// What nodal metrics shows: metrics.def, with names resolved.
#ifndef NODAL_METRIC_TABLE_H
#define NODAL_METRIC_TABLE_H

#include <span>
#include <string_view>
#include <vector>

#include "platkit/catalogue.h"

namespace nodal {

enum class MetricFamily : uint8_t {
#define FAMILY(name, labels, standard, text) name,
#define METRIC(name, type, node, field, help)
#define MADE_METRIC(name, type, labels, help)
#include "tools/nodal/metrics.def"
};

enum class MetricType : uint8_t { gauge, counter };

struct FamilyDescription {
  MetricFamily family;
  std::string_view name;
  std::string_view labels;
  bool isStandard;
  std::string_view text;
};

struct Metric {
  MetricFamily family;
  std::string_view name;
  MetricType type;
  std::string_view help;
  // Of one that is a field: the node and the field. The entry, if the field is one of the entries of `field`.
  const platkit::Node *node = nullptr;
  const platkit::Field *field = nullptr;
  const platkit::Field *entry = nullptr;
  // Of one that is made: the labels beside those of the family.
  std::string_view labels = {};

  // That the sample is made of.
  const platkit::Field &figure() const { return entry != nullptr ? *entry : *field; }
};

// Both in the order of metrics.def.
std::span<const FamilyDescription> MetricFamilies();
const FamilyDescription &DescriptionOf(MetricFamily family);
const std::vector<Metric> &Metrics();

}  // namespace nodal

#endif  // NODAL_METRIC_TABLE_H
