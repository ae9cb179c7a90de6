#include "tools/nodal/tree/path_filter.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "platkit/node_ref.h"
#include "tools/nodal/support/output.h"

namespace nodal {
namespace {

TEST(PathFilter, WithoutPathsContainsEverything) {
  PathFilter all({});
  EXPECT_TRUE(all.Contains("/system/heaps"));
  EXPECT_TRUE(all.Contains("/hardware/pci/seg"));
  all.RequireAllFound();
}

TEST(PathFilter, ContainsNamedPathsAndEverythingBelow) {
  const PathFilter filter({"/system/heaps/", "/sched/groups/1"});
  for (const char *path : {"/system/heaps", "/system/heaps/main/stats", "/sched/groups/1/groupName"})
    EXPECT_TRUE(filter.Contains(path)) << path;
  for (const char *path : {"/system", "/system/heapsX", "/sched/groups/10/groupName", "/memory/memInfo"})
    EXPECT_FALSE(filter.Contains(path)) << path;
  EXPECT_TRUE(PathFilter({"/"}).Contains("/memory/memInfo"));
}

TEST(PathFilter, APartThatMustBeNamed) {
  EXPECT_FALSE(PathFilter({}, "/hardware/pci").Contains("/hardware/pci/seg"));
  EXPECT_FALSE(PathFilter({"/"}, "/hardware/pci").Contains("/hardware/pci/seg"));
  EXPECT_TRUE(PathFilter({"/"}, "/hardware/pci").Contains("/hardware/cpu/cpuList"));
  EXPECT_TRUE(PathFilter({"/", "/hardware/pci/seg"}, "/hardware/pci").Contains("/hardware/pci/seg"));
}

bool MayContain(const PathFilter &filter, const platkit::Node &node) {
  return std::ranges::any_of(AllPathTemplates(),
                             [&](const PathTemplate &form) { return form.node == &node && filter.MayContain(form); });
}

TEST(PathFilter, FormsOfContainedPaths) {
  const PathFilter filter({"/sched/groups/1"}, "/hardware/pci");
  EXPECT_TRUE(MayContain(filter, platkit::nodes::sched_groups_groupName));
  EXPECT_FALSE(MayContain(filter, platkit::nodes::system_heaps));
  EXPECT_FALSE(MayContain(PathFilter({"/sched/groups/1/stats"}), platkit::nodes::sched_groups_groupName));
  EXPECT_FALSE(MayContain(PathFilter({}, "/hardware/pci"), platkit::nodes::hardware_pci_seg));
  EXPECT_TRUE(MayContain(PathFilter({"/hardware/pci"}, "/hardware/pci"), platkit::nodes::hardware_pci_seg));
}

TEST(PathFilter, NamedPathsMustBeFound) {
  PathFilter filter({"/system", "/memory"});
  EXPECT_THROW(filter.RequireAllFound(), Failure);
  filter.MarkFound("/memory/memInfo");
  EXPECT_THROW(filter.RequireAllFound(), Failure);
  filter.MarkFound("/system");
  filter.RequireAllFound();
}

TEST(PathFilter, RefusesRelativePaths) { EXPECT_THROW(PathFilter({"system"}), Failure); }

}  // namespace
}  // namespace nodal
