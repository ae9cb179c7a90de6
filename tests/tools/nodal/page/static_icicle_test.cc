#include "tools/nodal/page/static_icicle.h"

#include <gtest/gtest.h>

#include "tests/tools/nodal/page/record_bytes.h"

namespace nodal {
namespace {

struct Group {
  const char *name;
  int parent;
  uint64_t consumed;
  uint64_t max = HVC_KB_NONE;
};

std::string IcicleOf(const std::vector<Group> &groups) {
  PageFamily family;
  PageRecords stats = {.node = nodes::sched_groups_stats_memoryStats.operator->()};
  PageRecords allocations = {.node = nodes::sched_groups_memAllocationInKB.operator->()};
  for (size_t row = 0; row < groups.size(); ++row) {
    family.rows.push_back({.name = groups[row].name, .parent = groups[row].parent});
    GroupMemoryStatsRecord record = {};
    record.consumed = groups[row].consumed;
    stats.bytes[row] = BytesOfRecord(record);
    GroupAllocRecord allocation = {};
    allocation.max = groups[row].max;
    allocations.bytes[row] = BytesOfRecord(allocation);
  }
  family.records = {stats, allocations};
  return StaticIcicle(family);
}

bool Has(const std::string &svg, const char *part) { return svg.find(part) != std::string::npos; }

TEST(StaticIcicle, PlacesMembersBelowTheirGroup) {
  const std::string svg = IcicleOf({{"host", -1, 100}, {"a", 0, 60}, {"a1", 1, 30}, {"b", 0, 40}});
  EXPECT_TRUE(Has(svg, R"(<rect x="0.0" y="0.0" width="999.0")")) << svg;
  EXPECT_TRUE(Has(svg, R"(<rect x="0.0" y="26.0" width="599.0")")) << svg;
  EXPECT_TRUE(Has(svg, R"(<rect x="0.0" y="52.0" width="299.0")")) << svg;
  EXPECT_TRUE(Has(svg, R"(<rect x="600.0" y="26.0" width="399.0")")) << svg;
}

TEST(StaticIcicle, NarrowsMembersThatShareMemory) {
  const std::string svg = IcicleOf({{"host", -1, 100}, {"a", 0, 100}, {"b", 0, 100}});
  EXPECT_TRUE(Has(svg, R"(<rect x="0.0" y="26.0" width="499.0")")) << svg;
  EXPECT_TRUE(Has(svg, R"(<rect x="500.0" y="26.0" width="499.0")")) << svg;
}

TEST(StaticIcicle, GivesAGroupWithoutAFigureTheSumOfItsMembers) {
  const std::string svg = IcicleOf({{"host", -1, HVC_KB_NONE}, {"a", 0, 50}});
  EXPECT_TRUE(Has(svg, R"(<title>host: n/a</title><rect x="0.0" y="0.0" width="999.0")")) << svg;
}

TEST(StaticIcicle, ColoursByTheLimit) {
  const std::string svg =
      IcicleOf({{"host", -1, 400}, {"a", 0, 96, 100}, {"b", 0, 94, 100}, {"c", 0, 60, 100}, {"d", 0, 59, 100}});
  for (const char *style : {"box-none", "box-at", "box-near", "box-half", "box-far"})
    EXPECT_TRUE(Has(svg, style)) << style;
}

TEST(StaticIcicle, OmitsWhatCannotBeSeen) {
  const std::string svg = IcicleOf({{"host", -1, 10000}, {"large", 0, 9000}, {"tiny", 0, 1}});
  EXPECT_FALSE(Has(svg, "tiny"));
  EXPECT_EQ(IcicleOf({}), IcicleOf({{"host", -1, 0}}));
}

TEST(StaticIcicle, EscapesNames) { EXPECT_FALSE(Has(IcicleOf({{"<b>", -1, 1}}), "<b>")); }

}  // namespace
}  // namespace nodal
