// The metrics of `nodal metrics`.
#ifndef NODAL_METRICS_METRIC_TABLE_H
#define NODAL_METRICS_METRIC_TABLE_H

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <variant>

#include "platkit/node_ref.h"

namespace nodal {

// The kinds of things that metrics describe.
enum class MetricFamily : uint8_t { kHost, kGroup, kVm, kWorld, kPool, kBuddy, kHeap, kVolume, kRegion, kReading };

struct FamilyDescription {
  MetricFamily family;
  std::string_view name;    // for --only; the names of the family's metrics begin with it
  std::string_view labels;  // separated by ", "
  bool isStandard;          // shown without --only
  std::string_view text;
};

enum class MetricType : uint8_t { kGauge, kCounter };

// A field of a node's record, or of the entries of an array in that record.
struct NodeField {
  platkit::NodeId node;
  uint32_t offset;
  std::optional<uint32_t> offsetInEntry = {};
};

// Values that are computed instead of copied from a single field.
enum class Computation : uint8_t { kMemoryState, kMemoryStateEntries, kGroupInfo, kReadingFailures, kReadingInfo };

// The unit of a field determines the unit of the samples and the end of the metric's name. KB, BYTES, PAGES and BLOCKS
// become bytes, PERCENT becomes a ratio, and USEC becomes seconds.
struct Metric {
  MetricFamily family;
  std::string_view name;  // without the prefix
  MetricType type;
  std::variant<NodeField, Computation> value;
  std::string_view help;
  std::string_view labels = {};  // labels in addition to the labels of the family

  // Null for a computed metric.
  const platkit::Node *node() const;
  const platkit::Field *field() const;

  // Null unless the value is in the entries of field().
  const platkit::Field *entryField() const;

  // The field that holds the value.
  const platkit::Field *valueField() const { return entryField() != nullptr ? entryField() : field(); }
};

// In the order in which they are shown.
std::span<const FamilyDescription> MetricFamilies();
const FamilyDescription &DescriptionOf(MetricFamily family);
std::span<const Metric> Metrics();

}  // namespace nodal

#endif  // NODAL_METRICS_METRIC_TABLE_H
