// uw-stats: the filters by type. Of the host's groups, shell is a stand-alone user world, mail a user world of a
// virtual machine, and web only a virtual machine.
#include <algorithm>

#include "tests/faults/hosts.h"
#include "tests/faults/report_case.h"

namespace faults::uw_stats {
namespace {

constexpr char kBoth[] = "type,name\nuw,shell\n(all),mail\n,\n";
constexpr char kShell[] = "type,name\nuw,shell\n,\n";
constexpr char kMail[] = "type,name\n(all),mail\n,\n";
constexpr char kNone[] = "type,name\n,\n";

constexpr ReportCase Types(const char *name, const char *options, const char *output, const char *errors = "",
                           int exitStatus = 0) {
  return {name, MachinesHost, {"-r uw-stats -q -s type:name", options}, output, errors, exitStatus};
}

class UwStats : public testing::TestWithParam<ReportCase> {};

TEST_P(UwStats, AnswersAs) { Check(GetParam()); }

constexpr ReportCase kFiltersCases[] = {
    Types("None", "", kBoth),
    Types("VmBased", "-i vm", kMail),
    Types("AnyCase", "--iFilter=VM", kMail),
    Types("UserWorlds", "-i uw", kBoth),
    Types("BothTypes", "-i :vm::uw", kBoth),
    Types("NoType", "-i :", kNone),
    Types("EmptyInclusion", "-i ''", kNone),
    Types("NotVmBased", "-e vm", kShell),
    Types("NoUserWorlds", "--eFilter uw", kNone),
    Types("EmptyExclusion", "-e ''", kBoth),
    Types("ExclusionWins", "-i vm -e vm", kNone),
    Types("TheLastCounts", "-i xx -e yy -i vm -e :", kMail),
};

INSTANTIATE_TEST_SUITE_P(Filters, UwStats, testing::ValuesIn(kFiltersCases), NameOf<ReportCase>);

constexpr ReportCase kBadFiltersCases[] = {
    Types("UnknownType", "-i xx", "", "Invalid flag (xx) in filter\n", 1),
    Types("UnknownSecondType", "-i vm:xx:yy", "", "Invalid flag (xx) in filter\n", 1),
    Types("UnknownInExclusion", "-e uw:zz", "", "Invalid flag (zz) in filter\n", 1),
    Types("AGroupsFlagIsNoType", "-e sys", "", "Invalid flag (sys) in filter\n", 1),
    Types("InclusionIsReadFirst", "-e zz -i xx", "", "Invalid flag (xx) in filter\n", 1),
    Types("UnitIsReadBefore", "-i xx -u b", "", "Invalid unit specified. Choose from {mb, kb, pg}\n", 1),
    Types("LevelIsReadBefore", "-i xx -l 0", "", "Invalid level 0, must be > 0\n", 1),
};

INSTANTIATE_TEST_SUITE_P(BadFilters, UwStats, testing::ValuesIn(kBadFiltersCases), NameOf<ReportCase>);

TEST(UwStatsCalls, ABadFilterReadsNothing) {
  for (const char *option : {"-i", "-e"}) {
    EXPECT_EQ(RunKestrel(MachinesHost(), {"-r", "uw-stats", option, "xx"}).calls,
              std::vector<std::string>{"NODAL_CheckSig(21) = 0"});
  }
}

TEST(UwStatsCalls, AGroupThatDoesNotPrintIsAskedForItsFlagsAndItsChildren) {
  const StandinRun run = RunKestrel(MachinesHost(), {"-r", "uw-stats", "-e", "uw", "-g", "20"});
  std::vector<std::string> reads = run.calls;
  std::erase_if(reads, [](const std::string &call) {
    return !call.starts_with("NODAL_Get(") && !call.starts_with("NODAL_GetInstanceListAlloc(");
  });
  EXPECT_EQ(reads, Lines("NODAL_GetInstanceListAlloc(sched_groups_members_groups, [20]) = 0 list2\n"
                         "NODAL_Get(sched_groups_groupFlags, [20], 4) = 0\n"
                         "NODAL_GetInstanceListAlloc(sched_groups_members_groups, [21]) = 0 list5\n"
                         "NODAL_Get(sched_groups_groupFlags, [21], 4) = 0\n"));
}

}  // namespace
}  // namespace faults::uw_stats
