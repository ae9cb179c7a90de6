#include "tools/nodal/metrics/metric_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <set>

namespace nodal {
namespace {

using platkit::FieldUnit;

TEST(MetricTable, EachMetricIsAFieldOrComputed) {
  std::set<std::string_view> names;
  for (const Metric &metric : Metrics()) {
    EXPECT_TRUE(names.insert(metric.name).second) << metric.name;
    EXPECT_TRUE(std::regex_match(std::string(metric.name), std::regex("[a-z][a-z0-9_]*"))) << metric.name;
    EXPECT_TRUE(metric.help.ends_with('.')) << metric.name;
    EXPECT_EQ(metric.help.find_first_of("\\\n"), std::string::npos) << metric.name;
    if (metric.node() == nullptr) continue;
    ASSERT_NE(metric.field(), nullptr) << metric.name;
    EXPECT_EQ(metric.field()->type == platkit::FieldType::kEntries, metric.entryField() != nullptr) << metric.name;
    EXPECT_NE(metric.valueField()->type, platkit::FieldType::kText) << metric.name;
  }
}

TEST(MetricTable, EveryFamilyHasMetrics) {
  for (const FamilyDescription &family : MetricFamilies())
    EXPECT_NE(std::ranges::find(Metrics(), family.family, &Metric::family), Metrics().end()) << family.name;
}

TEST(MetricTable, NamesTellTheUnit) {
  for (const Metric &metric : Metrics()) {
    std::string_view name = metric.name;
    const bool isCounter = metric.type == MetricType::kCounter;
    EXPECT_EQ(name.ends_with("_total"), isCounter) << name;
    if (isCounter) name.remove_suffix(std::string_view("_total").size());
    const FieldUnit unit = metric.node() == nullptr ? FieldUnit::COUNT : metric.valueField()->unit;
    const bool isBytes =
        unit == FieldUnit::KB || unit == FieldUnit::BYTES || unit == FieldUnit::PAGES || unit == FieldUnit::BLOCKS;
    EXPECT_EQ(name.ends_with("_bytes"), isBytes) << name;
    EXPECT_EQ(name.ends_with("_seconds"), unit == FieldUnit::USEC) << name;
    EXPECT_EQ(name.ends_with("_ratio"), unit == FieldUnit::PERCENT) << name;
    EXPECT_FALSE(unit == FieldUnit::FLAGS || unit == FieldUnit::ID) << name;
  }
}

}  // namespace
}  // namespace nodal
