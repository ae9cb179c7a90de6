// group-stats: the walk over the groups, the rows, and the sums by tag.
#include <algorithm>

#include "tests/faults/hosts.h"
#include "tests/faults/report_case.h"

namespace faults::group_stats {
namespace {

class GroupStats : public testing::TestWithParam<ReportCase> {};

TEST_P(GroupStats, AnswersAs) { Check(GetParam()); }

// Several failing calls, and a status above INT32_MAX.

StandinHost Failing(const Fault &fault) { return SmallHost().Fail(fault); }

constexpr ReportCase kFailuresCases[] = {
    {"NoIdIsReadable", [] { return Failing({.operation = "NODAL_ParamListGetInt64"}); }, "-r group-stats -q -s gid",
     "gid\n0\n", "", 1},
    {"RemovalsFail", [] { return Failing({.operation = "NODAL_ParamListRemoveLastParam"}); },
     "-r group-stats -q -s gid", "gid\n0\n1\n4\n5\n7\n"},
    {"StatusAboveTheSignedRange", [] { return Failing({.operation = "NODAL_Get", .call = 1, .status = 0x80000001}); },
     "-r group-stats -q -s gid", "gid\n", "Kestrel_GroupGetFlags() failure, error code: 2147483649\n", 1},
};

INSTANTIATE_TEST_SUITE_P(Failures, GroupStats, testing::ValuesIn(kFailuresCases), NameOf<ReportCase>);

// Groups with and without a row.

constexpr ReportCase Csv(const char *name, StandinHost (*host)(), const char *options, const Text &output) {
  return {name, host, {"-r group-stats -q", options}, output};
}

constexpr char kLongName[] = "nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn";

Group Plain(int64_t id) { return {.id = id, .name = "g" + std::to_string(id), .tag = "t"}; }

StandinHost OneGroup(const Group &group) { return StandinHost().Add(group); }

Group WithLimits(uint64_t max, uint64_t minLimit) {
  Group group = Plain(0);
  group.alloc.max = max;
  group.alloc.minLimit = minLimit;
  return group;
}

StandinHost WithoutFlags(int64_t id) {
  Group group = SmallGroup(id);
  group.flags = 0;
  return SmallHost().Add(group);
}

constexpr ReportCase kRowsCases[] = {
    Csv("AllColumns", SmallHost, "-l 1",
        "gid,name,parGid,nChild,min,max,minLimit,shares,conResv,availResv,memSize,memSizePeak,iMin,eMin,eMinPeak,"
        "rMinPeak,rMinChildPeak,bMin,bMax,bShares,fShares,ovhdResv,ovhd,allocTgt,consumed,consumedPeak,touched,"
        "bActive,sharedSaved,mps,throttlePct,flags,tag\n"
        "0,host,-1,3,1001,1002,1004,1003,1005,1006,1007,1025,1017,1018,1023,1022,1027,1013,1014,1015,1016,1008,"
        "1009,1020,1011,1024,1012,1019,1010,1021,26,pre,top\n"),
    Csv(
        "AGroupWithoutFlagsIsHidden", [] { return WithoutFlags(4); }, "-s gid", "gid\n0\n1\n5\n7\n"),
    Csv(
        "AHiddenStartGroup", [] { return WithoutFlags(0); }, "-s gid", "gid\n1\n4\n5\n7\n"),
    Csv("ChildrenBelowTheLevelsCount", SmallHost, "-l 2 -s nChild", "gid,nChild\n0,3\n1,0\n4,1\n7,0\n"),
    Csv(
        "AllFlags", [] { return OneGroup({.flags = 0x7fff}); }, "-s flags", "gid,flags\n0,(all)\n"),
    Csv(
        "FlagsWithoutAName", [] { return OneGroup({.flags = 0xffff8000}); }, "-s flags", "gid,flags\n0,(none)\n"),
    Csv(
        "FlagsInTheirOrder", [] { return OneGroup({.flags = 0x4005}); }, "-s flags", "gid,flags\n0,pre:vm:usr\n"),
    Csv("NameThatFillsItsField", [] { return OneGroup({.name = kLongName, .tag = "12345678"}); }, "-s name:tag",
        {"gid,name,tag\n0,", kLongName, ",12345678\n"}),
};

INSTANTIATE_TEST_SUITE_P(Rows, GroupStats, testing::ValuesIn(kRowsCases), NameOf<ReportCase>);

constexpr ReportCase kLimitsCases[] = {
    Csv(
        "AtTheBound", [] { return OneGroup(WithLimits(0xFFFFFFFFF0, 0xFFFFFFFFF0)); }, "-s max:minLimit",
        "gid,max,minLimit\n0,1099511627760,1099511627760\n"),
    Csv(
        "AboveTheBound", [] { return OneGroup(WithLimits(0xFFFFFFFFF1, 0xFFFFFFFFF1)); }, "-s max:minLimit -u mb",
        "gid,max,minLimit\n0,-1,-1\n"),
    Csv(
        "AllOnes", [] { return OneGroup(WithLimits(UINT64_MAX, UINT64_MAX)); }, "-s max:minLimit -u pg",
        "gid,max,minLimit\n0,-1,-1\n"),
    Csv(
        "OneKbInMb", [] { return OneGroup(WithLimits(1, 1025)); }, "-s max:minLimit -u mb",
        "gid,max,minLimit\n0,1,2\n"),
    Csv(
        "FiveKbInPages", [] { return OneGroup(WithLimits(5, 4)); }, "-s max:minLimit -u pg",
        "gid,max,minLimit\n0,2,1\n"),
};

INSTANTIATE_TEST_SUITE_P(Limits, GroupStats, testing::ValuesIn(kLimitsCases), NameOf<ReportCase>);

// A group with two children; all three have the same tag.
StandinHost AlikeTagged() {
  StandinHost host = SmallHost();
  for (const int64_t id : {0, 1, 4}) {
    Group group = SmallGroup(id);
    group.tag = "all";
    group.children = id == 0 ? std::vector<testing_support::Instance>{1, 4} : std::vector<testing_support::Instance>{};
    host.Add(group);
  }
  return host;
}

// A start group and `below` groups below it, each with a tag of its own.
StandinHost TaggedApart(int64_t below) {
  StandinHost host;
  Group top = Plain(0);
  for (int64_t id = 1; id <= below; ++id) {
    Group group = Plain(id);
    group.tag = "t" + std::to_string(id);
    host.Add(group);
    top.children.push_back(id);
  }
  return host.Add(top);
}

std::string TaggedGroupRows(int64_t last) {
  std::string rows = "gid,tag\n0,t\n";
  for (int64_t id = 1; id <= last; ++id)
    rows += std::to_string(id) + ",t" + std::to_string(id) + "\n";
  return rows;
}

std::string TagRows(int64_t last) {
  std::string rows = "Virtual tags report\n1,t\n";
  for (int64_t id = 1; id <= last; ++id)
    rows += "1,t" + std::to_string(id) + "\n";
  return rows;
}

constexpr ReportCase kTagsCases[] = {
    // The figures of the three groups start at 1000, 2000 and 5000. The row of sums adds each `consumed` twice.
    Csv("ThreeAlike", AlikeTagged,
        "-t -s "
        "name:parGid:nChild:min:max:minLimit:shares:conResv:memSize:bMin:bMax:bShares:consumed:consumedPeak:mps:"
        "throttlePct:flags:tag",
        "gid,name,parGid,nChild,min,max,minLimit,shares,conResv,memSize,bMin,bMax,bShares,consumed,consumedPeak,"
        "mps,throttlePct,flags,tag\n"
        "0,host,-1,2,1001,1002,1004,1003,1005,1007,1013,1014,1015,1011,1024,1021,26,pre,all\n"
        "1,system,0,0,2001,2002,2004,2003,2005,2007,2013,2014,2015,2011,2024,2021,27,pre:sys,all\n"
        "4,user,0,0,5001,5002,5004,5003,5005,5007,5013,5014,5015,5011,5024,5021,30,co,all\n"
        "Virtual tags report\n"
        "1,all,0,2,8003,-1,-1,0,8015,8021,8039,5014,0,16066,8072,-1,0,(none),all\n"),
    Csv("OnlyPrintedGroupsCount", AlikeTagged, "-t -i co -s name:min",
        "gid,name,min\n4,user,5001\nVirtual tags report\n1,all,5001\n"),
    Csv("NoGroups", AlikeTagged, "-t -i vmm -s name", "gid,name\nVirtual tags report\n"),
    Csv(
        "CaseCounts",
        [] { return StandinHost().Add({.id = 0, .tag = "a", .children = {1}}).Add({.id = 1, .tag = "A"}); },
        "-t -s tag", "gid,tag\n0,a\n1,A\nVirtual tags report\n1,a\n1,A\n"),
    Csv(
        "EmptyTags", [] { return StandinHost().Add({.id = 0, .children = {1}}).Add({.id = 1}); }, "-t -s nChild:tag",
        "gid,nChild,tag\n0,1,\n1,0,\nVirtual tags report\n1,1,\n"),
    Csv(
        "SevenCharactersMatch",
        [] { return StandinHost().Add({.id = 0, .tag = "1234567", .children = {1}}).Add({.id = 1, .tag = "1234567"}); },
        "-t -s name:tag", "gid,name,tag\n0,,1234567\n1,,1234567\nVirtual tags report\n1,1234567,1234567\n"),
    // A row of sums keeps seven characters of a tag, so a tag of eight matches no row, not even its own.
    Csv(
        "EightCharactersNeverMatch",
        [] {
          return StandinHost().Add({.id = 0, .tag = "12345678", .children = {1}}).Add({.id = 1, .tag = "12345678"});
        },
        "-t -s name:tag",
        "gid,name,tag\n0,,12345678\n1,,12345678\nVirtual tags report\n1,12345678,1234567\n1,12345678,1234567\n"),
};

INSTANTIATE_TEST_SUITE_P(Tags, GroupStats, testing::ValuesIn(kTagsCases), NameOf<ReportCase>);

TEST(GroupStatsTags, AreAsManyAsThereAreSlots) {
  Check(TaggedApart(511), "-r group-stats -q -t -s tag", TaggedGroupRows(511) + TagRows(511));
}

TEST(GroupStatsTags, BeyondTheSlotsHideTheirGroups) {
  Check(TaggedApart(513), "-r group-stats -q -t -s tag", TaggedGroupRows(511) + TagRows(511),
        "Maximum number of VTag exceeded\nMaximum number of VTag exceeded\n");
}

TEST(GroupStatsTags, TakeNoSlotsUnlessTheyAreAskedFor) {
  Check(TaggedApart(512), "-r group-stats -q -s tag", TaggedGroupRows(512));
}

constexpr char kTable[] = R"(
 GROUP STATS: <time>
 -------------------------------------
   Start Group ID   : 18446744073709551612
   No. of levels    : 3
   Unit             : Page (4K)
   Inclusion filter : pre:vm:ug
   Exclusion filter : sd
   Selected columns : gid:name:parGid:max:flags

--------------------------------------------------------------------------
     gid                         name   parGid        max            flags
--------------------------------------------------------------------------
      -4                         edge       -9        251             pre
--------------------------------------------------------------------------
Virtual tags report
       1                            t        0         -1           (none)
--------------------------------------------------------------------------
Description of report header labels:
                 gid: Group ID
                name: Group name
              parGid: Parent group ID
                 max: Configured memory limit
               flags: Group flags
)";

TEST(GroupStatsTable, WithEverythingAroundIt) {
  Group group = {.id = -4, .name = "edge", .tag = "t", .parent = -9, .flags = 1};
  group.alloc.max = 1001;
  std::string expected = kTable;
  // The ID is printed as an unsigned number and exceeds its column, so the field of the name becomes narrower.
  const std::string narrow = "      -4                         edge       -9        251             pre\n";
  expected.replace(expected.find(narrow), narrow.size(),
                   "18446744073709551612             edge       -9        251              pre\n");
  Check(OneGroup(group), "-r group-stats -g -4 -l 3 -u pg -i ug:vm:pre -e sd -t -v -s name:parGid:max:flags", expected);
}

constexpr char kStoppedTable[] = R"(
 GROUP STATS: <time>
 -------------------------------------
   Start Group ID   : 18446744072414584320
   No. of levels    : 12
   Unit             : KB
   Inclusion filter : (all)
   Exclusion filter : (none)
   Selected columns : gid

--------
     gid
--------
--------
Virtual tags report
--------
Description of report header labels:
                 gid: Group ID
)";

TEST(GroupStatsTable, IsClosedAlsoAfterAFailure) {
  Check(SmallHost(), "-r group-stats -g 3000000000 -s gid -t -v", kStoppedTable, "", 1);
}

TEST(GroupStatsTable, MessagesStandWhereTheyWereMade) {
  StandinHost host = SmallHost();
  host.Fail({.operation = "NODAL_Get", .node = "sched_groups_stats_memoryStats", .call = 3});
  const StandinRun run = RunKestrel(host, {"-r", "group-stats", "-q", "-s", "gid"}, {.errorsToOutput = true});
  EXPECT_EQ(run.outcome.output, "gid\n0\n1\nKestrelGroupGetMemoryStats() failure, error code: 195887105\n7\n");
}

TEST(GroupStatsCalls, AGroupIsReadInAFixedOrder) {
  const StandinRun run = RunKestrel(SmallHost(), {"-r", "group-stats", "-l", "1"});
  EXPECT_EQ(CallsThatCount(run), Lines("NODAL_CheckSig(21) = 0\n"
                                       "NODAL_ParamListCreate(1, 2) = list1\n"
                                       "NODAL_ParamListAddInt(list1, 0) = 0\n"
                                       "NODAL_GetInstanceListAlloc(sched_groups_members_groups, [0]) = 0 list2\n"
                                       "NODAL_ParamListRemoveLastParam(list1) = 0\n"
                                       "NODAL_ParamListDestroy(list1)\n"
                                       "NODAL_ParamListCreate(1, 2) = list3\n"
                                       "NODAL_ParamListAddInt(list3, 0) = 0\n"
                                       "NODAL_Get(sched_groups_groupFlags, [0], 4) = 0\n"
                                       "NODAL_ParamListRemoveLastParam(list3) = 0\n"
                                       "NODAL_ParamListDestroy(list3)\n"
                                       "NODAL_ParamListCreate(1, 2) = list4\n"
                                       "NODAL_ParamListAddInt(list4, 0) = 0\n"
                                       "NODAL_Get(sched_groups_groupName, [0], 64) = 0\n"
                                       "NODAL_ParamListRemoveLastParam(list4) = 0\n"
                                       "NODAL_ParamListDestroy(list4)\n"
                                       "NODAL_ParamListCreate(1, 2) = list5\n"
                                       "NODAL_ParamListAddInt(list5, 0) = 0\n"
                                       "NODAL_Get(sched_groups_groupTag, [0], 8) = 0\n"
                                       "NODAL_ParamListRemoveLastParam(list5) = 0\n"
                                       "NODAL_ParamListDestroy(list5)\n"
                                       "NODAL_ParamListCreate(1, 2) = list6\n"
                                       "NODAL_ParamListAddInt(list6, 0) = 0\n"
                                       "NODAL_Get(sched_groups_parentGroupID, [0], 8) = 0\n"
                                       "NODAL_ParamListRemoveLastParam(list6) = 0\n"
                                       "NODAL_ParamListDestroy(list6)\n"
                                       "NODAL_ParamListCreate(1, 2) = list7\n"
                                       "NODAL_ParamListAddInt(list7, 0) = 0\n"
                                       "NODAL_Get(sched_groups_memAllocationInKB, [0], 32) = 0\n"
                                       "NODAL_ParamListRemoveLastParam(list7) = 0\n"
                                       "NODAL_ParamListDestroy(list7)\n"
                                       "NODAL_ParamListCreate(1, 2) = list8\n"
                                       "NODAL_ParamListAddInt(list8, 0) = 0\n"
                                       "NODAL_Get(sched_groups_stats_capacity, [0], 24) = 0\n"
                                       "NODAL_ParamListRemoveLastParam(list8) = 0\n"
                                       "NODAL_ParamListDestroy(list8)\n"
                                       "NODAL_ParamListCreate(1, 2) = list9\n"
                                       "NODAL_ParamListAddInt(list9, 0) = 0\n"
                                       "NODAL_Get(sched_groups_stats_memoryStats, [0], 320) = 0\n"
                                       "NODAL_ParamListRemoveLastParam(list9) = 0\n"
                                       "NODAL_ParamListDestroy(list9)\n"
                                       "NODAL_ParamListDestroy(list2)\n"));
}

// The records that a run reads, as node and group: "groupFlags 4".
std::vector<std::string> Reads(const StandinRun &run) {
  std::vector<std::string> reads;
  for (const std::string &call : run.calls) {
    const std::string start = "NODAL_Get(sched_groups_";
    if (!call.starts_with(start)) continue;
    const std::string node = call.substr(start.size(), call.find(',') - start.size());
    const size_t group = call.find('[') + 1;
    reads.push_back(node + ' ' + call.substr(group, call.find(']') - group));
  }
  return reads;
}

TEST(GroupStatsCalls, AGroupThatDoesNotPrintIsNotReadFurther) {
  const StandinRun run = RunKestrel(SmallHost(), {"-r", "group-stats", "-i", "vmm"});
  EXPECT_EQ(Reads(run), Lines("groupFlags 0\n"
                              "groupFlags 1\n"
                              "groupFlags 4\n"
                              "groupFlags 5\n"
                              "groupFlags 7\n"));
}

TEST(GroupStatsCalls, IdsOfAnyWidthAreHandedOnWhole) {
  StandinHost host;
  host.Add({.id = 0, .children = {0x123456789abcdef, -2}});
  const StandinRun run = RunKestrel(host, {"-r", "group-stats", "-i", "vmm"});
  EXPECT_NE(std::find(run.calls.begin(), run.calls.end(), "NODAL_ParamListAddInt(list4, 81985529216486895) = 0"),
            run.calls.end())
      << run;
  EXPECT_EQ(run.outcome.exitStatus, 0);
  EXPECT_EQ(ListErrors(run), "");
}

}  // namespace
}  // namespace faults::group_stats
