// The common behaviour of all reports of virtual machines and user worlds.
#include <algorithm>

#include "tests/faults/hosts.h"
#include "tests/faults/report_case.h"

namespace faults::group_reports {
namespace {

// The reads of a report, as in the log but without statuses.

std::string OfGroup(int64_t group, const char *node, unsigned size) {
  return "NODAL_Get(sched_groups_" + std::string(node) + ", [" + std::to_string(group) + "], " + std::to_string(size) +
         ")";
}

std::string OfClient(uint32_t client, const char *node, unsigned size) {
  return "NODAL_Get(" + std::string(node) + ", [" + std::to_string(client) + "], " + std::to_string(size) + ")";
}

std::string Flags(int64_t group) { return OfGroup(group, "groupFlags", 4); }

std::string Listing(int64_t group) {
  return "NODAL_GetInstanceListAlloc(sched_groups_members_groups, [" + std::to_string(group) + "])";
}

std::string VmmLeader(uint32_t leader) { return OfClient(leader, "worldGroups_vmmLeaderID", 4); }

std::string SwapFigures(uint32_t client) { return OfClient(client, "sched_memClients_swapInfo", 220); }

std::string VmmFigures(uint32_t leader) { return OfClient(leader, "sched_memClients_kestrel_vmm", 336); }

// The reads of a group up to its leader, with its flags twice, and then `rest`.
std::vector<std::string> Led(int64_t group, const std::vector<std::string> &rest) {
  std::vector<std::string> reads = {Flags(group), OfGroup(group, "groupName", 64), OfGroup(group, "parentGroupID", 8),
                                    Flags(group), OfGroup(group, "groupLeaderID", 4)};
  reads.insert(reads.end(), rest.begin(), rest.end());
  return reads;
}

// A report over MachinesHost(). `group` is web, or shell in a report of user worlds. The other rows are those of mail,
// which is in all reports.
struct Report {
  const char *name;  // of the test
  const char *report;
  int64_t group;
  std::vector<std::string> reads;
  std::string header;
  std::string rows;  // of this group
  std::string otherRows;
  std::string total;
  std::string emptyTotal;
  bool hasLevels = true;
};

void PrintTo(const Report &report, std::ostream *stream) { *stream << report.name; }

const std::vector<Report> &Reports() {
  static const auto &reports = *new std::vector<Report>{
      {.name = "VmStats",
       .report = "vm-stats",
       .group = 10,
       .reads =
           Led(10, {Listing(10), Flags(11), OfGroup(10, "memAllocationInKB", 32), OfGroup(11, "memAllocationInKB", 32),
                    VmmFigures(110), VmmLeader(110), SwapFigures(111), OfGroup(10, "stats_memoryStats", 320)}),
       .header = "name,b,schedGrp,parSchedGroup,worldGrp,memSizeLimit,memSize,min,max,minLimit,shares,ovhdResv,ovhd,"
                 "allocTgt,consumed,balloonTgt,ballooned,swapTgt,swapped,mapped,touched,zipped,vpmemRO,vpmemRW,vpmemUC,"
                 "zipSaved,shared,zero,sharedSaved,useReliableMem,swapScope\n",
       .rows =
           "web,n,10,0,110,110000000001,110000000002,12001,12002,11004,11003,11008,11009,110000000004,1087,"
           "110000000019,110000000018,110000000016,111000000022,110000001110,110000000003,110000000006,110000000008,"
           "110000000009,110000000010,110000000015,110000000013,110000000005,110000000014,y,110000000017\n",
       .otherRows =
           "mail,y,30,0,130,130000000001,130000000002,32001,32002,31004,31003,31008,31009,130000000004,1107,"
           "130000000019,130000000018,130000000016,131000000022,130000001130,130000000003,130000000006,130000000008,"
           "130000000009,130000000010,130000000015,130000000013,130000000005,130000000014,n,130000000017\n",
       .total = "Total,,,,,240000000002,240000000004,44002,,,,42016,42018,240000000008,2194,240000000038,240000000036,"
                "240000000032,242000000044,240000002240,240000000006,240000000012,240000000016,240000000018,"
                "240000000020,240000000030,240000000026,240000000010,240000000028,,\n",
       .emptyTotal = "Total,,,,,0,0,0,,,,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,,\n"},
      {.name = "UwStats",
       .report = "uw-stats",
       .group = 20,
       .reads = Led(20, {OfClient(120, "sched_memClients_kestrel_uw", 360)}),
       .header = "type,name,schedGrp,parSchedGroup,worldGrp,min,max,minLimit,shares,totalResv,pinnedResv,memSizeLimit,"
                 "memSize,memBStore,swapBStore,mapped,touched,swappable,cow,pageable,pageableUnacct,pinned,prealloced,"
                 "shm,allocTgt,consumed,swapTgt,swapped,useReliableMem,swapScope\n",
       .rows = "uw,shell,20,0,120,120000000101,120000000102,120000000103,120104,120000000115,120000000116,120105,"
               "120000000106,120000000117,120000000118,120000001120,120000000107,120000000119,120000000121,"
               "120000000122,120000000123,120000000125,120000000126,120000000120,120000000108,1006,120000000113,"
               "120000000124,n,120000000114\n",
       .otherRows = "(all),mail,30,0,130,130000000101,130000000102,130000000103,130104,130000000115,130000000116,"
                    "130105,130000000106,130000000117,130000000118,130000001130,130000000107,130000000119,130000000121,"
                    "130000000122,130000000123,130000000125,130000000126,130000000120,130000000108,1016,130000000113,"
                    "130000000124,y,130000000114\n",
       .total = ",,,,,250000000202,,,,250000000230,250000000232,,250000000212,250000000234,250000000236,250000002250,"
                "250000000214,250000000238,250000000242,250000000244,250000000246,250000000250,250000000252,"
                "250000000240,250000000216,2022,250000000226,250000000248,,\n",
       .emptyTotal = ",,,,,0,,,,0,0,,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,,\n"},
      {.name = "SwapStats",
       .report = "swap-stats",
       .group = 10,
       .reads = Led(10, {VmmLeader(110), SwapFigures(111), VmmFigures(110)}),
       .header = "name,schedGrp,parSchedGroup,worldGrp,isSwapping,CurSwapper,cacheUsage,swapoutReady,swapTgt,swapped,"
                 "swapRead,swapIn,swapOut,discarded,COWSwapper,vmmSwapOn,hvcSwapOn,llswapped,llswapUsed,totalReg,"
                 "freeReg,cptTgt,cptRead,cptWritten,totalMig,freeMig,gblSwapRead,gblSwapIn,gblSwapOut\n",
       .rows =
           "web,10,0,110,y,vmm,111040,111000000041,111000000021,111000000022,111000000023,111000000024,111000000025,"
           "111000000030,111000000029,111031,111032,110000000007,110000000011,111000000033,111000000034,111000000035,"
           "111000000036,111000000037,111000000038,111000000039,111000000026,111000000027,111000000028\n",
       .otherRows =
           "mail,30,0,130,n,hvc,131040,131000000041,131000000021,131000000022,131000000023,131000000024,131000000025,"
           "131000000030,131000000029,131031,131032,130000000007,130000000011,131000000033,131000000034,131000000035,"
           "131000000036,131000000037,131000000038,131000000039,131000000026,131000000027,131000000028\n",
       .total = "Total,,,,,,,,242000000042,242000000044,242000000046,242000000048,242000000050,242000000060,"
                "242000000058,242062,242064,240000000014,240000000022,242000000066,242000000068,242000000070,"
                "242000000072,242000000074,242000000076,242000000078,242000000052,242000000054,242000000056\n",
       .emptyTotal = "Total,,,,,,,,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0\n"},
      {.name = "GuestStats",
       .report = "guest-stats",
       .group = 10,
       .reads = Led(10, {OfClient(110, "sched_memClients_kestrel_guest", 20)}),
       .header = "name,schedGrp,parSchedGroup,worldGrp,memTotal,lpageTotal,memNeeded\n",
       .rows = "web,10,0,110,110000000051,110052,110000000053\n",
       .otherRows = "mail,30,0,130,130000000051,130052,130000000053\n",
       .total = "Total,,,,240000000102,240104,240000000106\n",
       .emptyTotal = "Total,,,,0,0,0\n"},
      {.name = "ZipStats",
       .report = "zip-stats",
       .group = 10,
       .reads = Led(10, {OfClient(110, "sched_memClients_memzipInfo", 136)}),
       .header = "name,schedGrp,parSchedGroup,worldGrp,totalCache,maxCache,usedCache,zipped,unZipped,zipRejected,"
                 "nrFreeHalf,nrFreeQuarter,avgZipTime,avgUnzipTime\n",
       .rows = "web,10,0,110,110000000061,110000000063,110000000062,110000000066,110000000067,110000000068,110064,"
               "110065,110000000069,110000000070\n",
       .otherRows = "mail,30,0,130,130000000061,130000000063,130000000062,130000000066,130000000067,130000000068,"
                    "130064,130065,130000000069,130000000070\n",
       .total = "Total,,,,240000000122,240000000126,240000000124,240000000132,240000000134,240000000136,240128,240130,"
                "120000000069,120000000070\n",
       .emptyTotal = "Total,,,,0,0,0,0,0,0,0,0,0,0\n"},
      {.name = "LPageStats",
       .report = "lpage-stats",
       .group = 10,
       .reads = Led(10, {VmmLeader(110), OfClient(111, "memory_lpage_vmLPage", 148)}),
       .header = "name,schedGrp,parSchedGroup,worldGrp,nrBackings,nrAllocSuccess,nrLockSuccess,nrBroken,"
                 "maxSwapThreshold,nrFailPinned,nrFailSwapped,nrFailPinnedLate,nrFailNoMem\n",
       .rows = "web,10,0,110,56984031,111000000072,222158,111000000078,111079,111000000074,111000000075,111000000076,"
               "111000000073\n",
       .otherRows = "mail,30,0,130,67244031,131000000072,262158,131000000078,131079,131000000074,131000000075,"
                    "131000000076,131000000073\n",
       .total = "Total,,,,124228062,242000000144,484316,242000000156,242158,242000000148,242000000150,242000000152,"
                "242000000146\n",
       .emptyTotal = "Total,,,,0,0,0,0,0,0,0,0,0\n"},
      // asyncremap_stats_test.cc tests the reads of memory clients.
      {.name = "AsyncRemapStats",
       .report = "asyncremap-stats",
       .group = 20,
       .reads = {Flags(20), OfGroup(20, "groupName", 64)},
       .header = "name,grpLeader,type,added,prepared,filtered,staged,remapped,canceled,cUnprepared,cPrepared,cStaged\n",
       .rows = "shell,120,copy,480004,480012,480008,480016,480024,480020,480028,480032,480036\n"
               "shell,120,move,960004,960012,960008,960016,960024,960020,960028,960032,960036\n"
               "shell,120,zero,1440004,1440012,1440008,1440016,1440024,1440020,1440028,1440032,1440036\n"
               "shell,121,copy,484004,484012,484008,484016,484024,484020,484028,484032,484036\n"
               "shell,121,move,968004,968012,968008,968016,968024,968020,968028,968032,968036\n",
       .otherRows = "mail,130,copy,520004,520012,520008,520016,520024,520020,520028,520032,520036\n",
       .total = ",,,4852024,4852072,4852048,4852096,4852144,4852120,4852168,4852192,4852216\n",
       .emptyTotal = ",,,0,0,0,0,0,0,0,0,0\n",
       .hasLevels = false},
  };
  return reports;
}

// The reads of a run, without their results.
std::vector<std::string> ReadsOf(const StandinRun &run) {
  std::vector<std::string> reads;
  for (const std::string &call : run.calls) {
    if (call.starts_with("NODAL_Get(") || call.starts_with("NODAL_GetInstanceListAlloc(")) {
      reads.push_back(call.substr(0, call.rfind(" = ")));
    }
  }
  return reads;
}

class GroupReport : public testing::TestWithParam<Report> {
 protected:
  const Report &report() const { return GetParam(); }

  StandinRun CheckOver(const StandinHost &host, const std::string &options, const std::string &output,
                       const std::string &errors = "", int exitStatus = 0) const {
    return Check(host, std::string("-r ") + report().report + " -q " + options, output, errors, exitStatus);
  }
  std::string Whole() const { return report().header + report().rows + report().otherRows + report().total; }
  std::string Empty() const { return report().header + report().emptyTotal; }
};

TEST_P(GroupReport, PrintsItsGroupsAndTheirTotal) { CheckOver(MachinesHost(), "", Whole()); }

TEST_P(GroupReport, OtherGroupsAreNoRows) {
  for (const char *group : {"11", "21", "31"})
    CheckOver(MachinesHost(), std::string("-g ") + group, Empty());
}

TEST_P(GroupReport, OtherGroupsAreAskedForNothingButTheirFlags) {
  EXPECT_EQ(ReadsOf(RunKestrel(MachinesHost(), {"-r", report().report, "-g", "31"})),
            (std::vector<std::string>{Listing(31), Flags(31)}));
}

// A host without groups of the report's kind, and a start group that does not exist.
TEST_P(GroupReport, PrintsATotalOfNothing) {
  StandinHost host;
  host.Add({.id = 0, .flags = HVC_GROUP_PREDEFINED});
  CheckOver(host, "", Empty());
  CheckOver(host, "-g 99", Empty(), "", 1);
}

TEST_P(GroupReport, TheLastChildsIdDecidesTheResult) {
  const Fault unreadable = {.operation = "NODAL_ParamListGetInt64", .node = "sched_groups_members_groups"};
  CheckOver(MachinesHost().Fail(unreadable), "", Empty(), "", 1);
}

// The argument lists all have a capacity of two. Other tests check when they are destroyed.
TEST_P(GroupReport, ReadsInAFixedOrder) {
  std::vector<std::string> expected = {"NODAL_CheckSig(21) = 0"};
  unsigned lists = 0;
  const auto expectRead = [&](const std::string &call) {
    const size_t start = call.find('[') + 1;
    const std::string argument = call.substr(start, call.find(']') - start);
    const std::string arguments = "list" + std::to_string(++lists);
    const bool makesList = call.starts_with("NODAL_GetInstanceListAlloc");
    expected.push_back("NODAL_ParamListCreate(1, 2) = " + arguments);
    expected.push_back("NODAL_ParamListAddInt(" + arguments + ", " + argument + ") = 0");
    expected.push_back(call + " = 0" + (makesList ? " list" + std::to_string(++lists) : ""));
    expected.push_back("NODAL_ParamListRemoveLastParam(" + arguments + ") = 0");
  };
  expectRead(Listing(report().group));
  for (const std::string &read : report().reads) {
    expectRead(read);
    if (read == Listing(report().group))
      expected.push_back("NODAL_ParamListGetInt64(list" + std::to_string(lists) + ", 0) = 0");
  }

  const StandinRun run = RunKestrel(MachinesHost(), {"-r", report().report, "-g", std::to_string(report().group)});
  std::vector<std::string> calls = CallsThatCount(run);
  std::erase_if(calls, [](const std::string &call) { return call.starts_with("NODAL_ParamListDestroy"); });
  ASSERT_GE(calls.size(), expected.size()) << run;
  calls.resize(expected.size());
  EXPECT_EQ(calls, expected);
}

TEST_P(GroupReport, BadUnitsEndItBeforeItReads) {
  constexpr char kBadUnit[] = "Invalid unit specified. Choose from {mb, kb, pg}\n";
  for (const char *unit : {"b", "''", "gb"}) {
    const StandinRun run = CheckOver(MachinesHost(), std::string("-s name -u ") + unit, "", kBadUnit, 1);
    EXPECT_EQ(run.calls, std::vector<std::string>{"NODAL_CheckSig(21) = 0"});
  }
}

TEST_P(GroupReport, OptionsOfOtherReportsAreIgnored) {
  CheckOver(MachinesHost(), "-t --tags -x --force -g", Whole());
  if (!report().hasLevels) CheckOver(MachinesHost(), "-l 0 --level=0", Whole());
}

INSTANTIATE_TEST_SUITE_P(Machines, GroupReport, testing::ValuesIn(Reports()), NameOf<Report>);

// The reports with -l, which also read the leader of a group.
class LevelledReport : public GroupReport {};

TEST_P(LevelledReport, LevelsEndTheWalk) {
  CheckOver(MachinesHost(), "-l 1", Empty());
  CheckOver(MachinesHost(), "-l 2", Whole());
}

TEST_P(LevelledReport, LevelsHaveBounds) {
  for (const char *level : {"0", "abc", "4294967296"}) {
    const std::string message = "Invalid level " + std::string(level) + ", must be > 0\n";
    const StandinRun run = CheckOver(MachinesHost(), std::string("-u b -l ") + level, "", message, 1);
    EXPECT_EQ(run.calls, std::vector<std::string>{"NODAL_CheckSig(21) = 0"});
  }
  for (const char *level : {"13", "-1"}) {
    const std::string message = "Specified level " + std::string(level) + " too high, reseting to 12\n";
    CheckOver(MachinesHost(), std::string("-l ") + level, Whole(), message);
  }
  CheckOver(MachinesHost(), "-l 20 --level=0", "",
            "Specified level 20 too high, reseting to 12\nInvalid level 0, must be > 0\n", 1);
}

TEST_P(LevelledReport, IdsAreUnsignedAsArguments) {
  const StandinHost host = MachinesHostLedBy(report().group, 4294967290, 4294967291);
  const bool isUnsigned = std::string(report().report) == "lpage-stats";
  CheckOver(host, "-s worldGrp -g " + std::to_string(report().group),
            std::string("worldGrp\n") + (isUnsigned ? "4294967290" : "-6") + "\n\n");
}

std::vector<Report> LevelledReports() {
  std::vector<Report> reports = Reports();
  std::erase_if(reports, [](const Report &report) { return !report.hasLevels; });
  return reports;
}

INSTANTIATE_TEST_SUITE_P(Machines, LevelledReport, testing::ValuesIn(LevelledReports()), NameOf<Report>);

// A VM without a VMM has no allocation.

class AVmWithoutAVmm : public testing::Test {
 protected:
  // As the start group, such a VM makes the report fail; below the start group, the VM is skipped.
  static void IsLeftOut(const StandinHost &atTheStart, const StandinHost &below) {
    Check(atTheStart, "-r vm-stats -q -s name:min -g 10", "name,min\nTotal,0\n", "", 1);
    Check(below, "-r vm-stats -q -s name:min", "name,min\nmail,32001\nTotal,32001\n");
  }
};

TEST_F(AVmWithoutAVmm, HasNoChildren) {
  const StandinHost host = MachinesHost().AddList("sched_groups_members_groups", {int64_t{10}}, {});
  IsLeftOut(host, host);
}

TEST_F(AVmWithoutAVmm, HasOtherChildren) {
  const StandinHost host = MachinesHost().AddList("sched_groups_members_groups", {int64_t{10}}, {int64_t{21}});
  IsLeftOut(host, host);
}

// A VM's allocation is truncated to 32 bits, converted with its sign, and truncated again.

StandinHost WithAlloc(uint64_t vmmMin, uint64_t vmmMax, uint64_t minLimit) {
  StandinHost host = MachinesHost();
  const GroupAllocRecord vm = {.min = 1, .max = 2, .shares = -3, .minLimit = minLimit, .unread_28 = {}};
  const GroupAllocRecord vmm = {.min = vmmMin, .max = vmmMax, .shares = 4, .minLimit = 5, .unread_28 = {}};
  host.AddRecord("sched_groups_memAllocationInKB", {int64_t{10}}, vm);
  host.AddRecord("sched_groups_memAllocationInKB", {int64_t{11}}, vmm);
  return host;
}

constexpr ReportCase Allocated(const char *name, StandinHost (*host)(), const char *rows) {
  return {name, host, "-r vm-stats -q -s min:max:minLimit:shares -u mb -g 10", {"min,max,minLimit,shares\n", rows}};
}

class VmAllocation : public testing::TestWithParam<ReportCase> {};

TEST_P(VmAllocation, ShowsAs) { Check(GetParam()); }

constexpr ReportCase kMachinesCases[] = {
    Allocated(
        "Plain", [] { return WithAlloc(1, 1025, 1024); }, "1,2,1,-3\n1,,,\n"),
    Allocated(
        "NoLimits", [] { return WithAlloc(0, UINT64_MAX, UINT64_MAX); }, "0,-1,-1,-3\n0,,,\n"),
    Allocated(
        "NegativeLimits", [] { return WithAlloc(0, 0x80000000, 0xfffffffe); }, "0,-1,-1,-3\n0,,,\n"),
    Allocated(
        "HighBitsAreLost", [] { return WithAlloc(0x100000401, 0x200000001, 0x500000000); }, "2,1,0,-3\n2,,,\n"),
    Allocated(
        "NegativeReservation", [] { return WithAlloc(0x80000401, 0, 0); }, "-2097150,0,0,-3\n-2097150,,,\n"),
    Allocated(
        "ReservationNotAvailable", [] { return WithAlloc(UINT64_MAX, 0, 0); }, "-1,0,0,-3\n-1,,,\n"),
};

INSTANTIATE_TEST_SUITE_P(Machines, VmAllocation, testing::ValuesIn(kMachinesCases), NameOf<ReportCase>);

// The tables of reports without rows.

struct Table {
  const char *name;  // of the test
  const char *report;
  const char *options;
  const char *title;
  const char *settings;
  const char *table;
};

void PrintTo(const Table &table, std::ostream *stream) { *stream << table.name; }

class EmptyTable : public testing::TestWithParam<Table> {};

TEST_P(EmptyTable, IsClosedAfterAFailure) {
  const Table &table = GetParam();
  const std::string arguments = std::string("-r ") + table.report + " -v -g 3000000000 " + table.options;
  Check(MachinesHost(), arguments,
        "\n" + std::string(table.title) + "   Start Group ID   : 18446744072414584320\n" + table.settings + table.table,
        "", 1);
}

constexpr char kVmTable[] = R"(
---------------
           name
---------------
---------------
          Total
---------------
Description of report header labels:
                name: Virtual machine name
)";

constexpr char kWideVmTable[] = R"(
--------------------
                name
--------------------
--------------------
               Total
--------------------
Description of report header labels:
                name: Virtual machine name
)";

constexpr char kUwTable[] = R"(
-------------------------------
                name        min
-------------------------------
-------------------------------
                              0
-------------------------------
Description of report header labels:
                name: User world name
                 min: Configured memory reservation
)";

constexpr char kRemapTable[] = R"(
---------------------------------------
                        type      added
---------------------------------------
---------------------------------------
                                      0
---------------------------------------
Description of report header labels:
                type: Type of remap
               added: Total number of pages ever added
)";

constexpr Table kTables[] = {
    {"VmStats", "vm-stats", "-s name -l 3",
     " VIRTUAL MACHINE STATS: <time>\n -----------------------------------------------\n",
     "   No. of levels    : 3\n   Unit             : KB\n   Selected columns : name\n", kVmTable},
    {"UwStats", "uw-stats", "-s MIN:name -u Mb -i VM -e vm:uw",
     " USER-WORLD STATS: <time>\n ------------------------------------------\n",
     "   No. of levels    : 12\n   Unit             : MB\n   Inclusion filter : vm\n"
     "   Exclusion filter : (all)\n   Selected columns : name:min\n",
     kUwTable},
    {"UwStatsWithoutFilters", "uw-stats", "-s name:min",
     " USER-WORLD STATS: <time>\n ------------------------------------------\n",
     "   No. of levels    : 12\n   Unit             : KB\n   Inclusion filter : (all)\n"
     "   Exclusion filter : (none)\n   Selected columns : name:min\n",
     kUwTable},
    {"SwapStats", "swap-stats", "-s name -u pg",
     " VIRTUAL MACHINE SWAP STATS: <time>\n ----------------------------------------------------\n",
     "   No. of levels    : 12\n   Unit             : Page (4K)\n   Selected columns : name\n", kWideVmTable},
    {"GuestStats", "guest-stats", "-s name", " GUEST STATS: <time>\n -------------------------------------\n",
     "   No. of levels    : 12\n   Unit             : KB\n   Selected columns : name\n", kWideVmTable},
    {"ZipStats", "zip-stats", "-s name",
     " VIRTUAL MACHINE COMPRESSION STATS: <time>\n"
     " -------------------------------------------------------------\n",
     "   No. of levels    : 12\n   Unit             : KB\n   Selected columns : name\n", kWideVmTable},
    {"LPageStats", "lpage-stats", "-s name -u mb",
     " VIRTUAL MACHINE LARGE PAGE STATS: <time>\n"
     " ----------------------------------------------------------\n",
     "   No. of levels    : 12\n   Unit             : LPage (2M)\n   Selected columns : name\n", kWideVmTable},
    {"AsyncRemapStats", "asyncremap-stats", "-s added -u PG",
     " ASYNC_REMAP STATS: <time>\n -------------------------------------------\n",
     "   Unit             : Page (4K)\n   Selected columns : type:added\n", kRemapTable},
};

INSTANTIATE_TEST_SUITE_P(Machines, EmptyTable, testing::ValuesIn(kTables), NameOf<Table>);

}  // namespace
}  // namespace faults::group_reports
