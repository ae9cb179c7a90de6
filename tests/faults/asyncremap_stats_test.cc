// asyncremap-stats: the memory clients of a user world and their remap types.
#include <algorithm>

#include "tests/faults/hosts.h"
#include "tests/faults/report_case.h"

namespace faults::asyncremap_stats {
namespace {

class AsyncRemapStats : public testing::TestWithParam<ReportCase> {};

TEST_P(AsyncRemapStats, AnswersAs) { Check(GetParam()); }

constexpr ReportCase Remap(const char *name, StandinHost (*host)(), const char *options, const char *output,
                           const char *errors = "", int exitStatus = 0) {
  return {name, host, {"-r asyncremap-stats -q", options}, output, errors, exitStatus};
}

StandinHost OneUserWorld() { return StandinHost().Add({.id = 0, .name = "shell", .flags = HVC_GROUP_USER_WORLD}); }

// A host with one client, which has one remap type with `pages` added pages. The type's name may be null.
StandinHost OneType(int64_t client, const testing_support::Instance &type, uint64_t pages) {
  RemapStatsRecord record = {};
  record.added = pages;
  StandinHost host = OneUserWorld();
  host.AddList("sched_groups_members_memClients", {0L}, {client});
  host.AddList("sched_memClients_remapTypes", {client}, {type});
  host.AddRecord("sched_memClients_remapTypes", {client, type}, record);
  return host;
}

// A library may list a null text. It may accept that text as an argument, either as null or as an empty text.
StandinHost WithoutTypeName() {
  RemapStatsRecord record = {};
  record.added = 1;
  return OneType(7, nullptr, 1).AddRecord("sched_memClients_remapTypes", {int64_t{7}, ""}, record);
}

constexpr ReportCase kListsCases[] = {
    Remap(
        "NoClients", [] { return OneUserWorld().AddList("sched_groups_members_memClients", {0L}, {}); }, "-s added",
        "type,added\n,0\n"),
    Remap(
        "NoTypes",
        [] {
          return OneUserWorld()
              .AddList("sched_groups_members_memClients", {0L}, {int64_t{7}})
              .AddList("sched_memClients_remapTypes", {int64_t{7}}, {});
        },
        "-s added", "type,added\n,0\n"),
    Remap(
        "AClientThatVanishedIsReported",
        [] { return OneUserWorld().AddList("sched_groups_members_memClients", {0L}, {int64_t{7}}); }, "-s added",
        "type,added\n,0\n",
        "KestrelAsyncRemapReportCallbackInt:305 failure: Not found\n"
        "KestrelAsyncRemapReportCallback:403 failure: Not found\n",
        1),
    Remap("TypeWithoutAName", WithoutTypeName, "-s name:added", "name,type,added\nshell,,4\n,,4\n"),
    Remap(
        "TypeWithAnEmptyName", [] { return OneType(7, "", 1); }, "-s name:added", "name,type,added\nshell,,4\n,,4\n"),
    Remap(
        "AClientIdIsUnsigned", [] { return OneType(4294967295, "copy", 1); }, "-s grpLeader:added",
        "grpLeader,type,added\n-1,copy,4\n,,4\n"),
};

INSTANTIATE_TEST_SUITE_P(Lists, AsyncRemapStats, testing::ValuesIn(kListsCases), NameOf<ReportCase>);

constexpr ReportCase kFiguresCases[] = {
    Remap(
        "OnePageInKb", [] { return OneType(7, "copy", 1); }, "-s added", "type,added\ncopy,4\n,4\n"),
    Remap(
        "OnePageInMb", [] { return OneType(7, "copy", 1); }, "-s added -u mb", "type,added\ncopy,1\n,1\n"),
    Remap(
        "OnePageInPages", [] { return OneType(7, "copy", 1); }, "-s added -u pg", "type,added\ncopy,1\n,1\n"),
    // UINT64_MAX is an ordinary count of pages, not "not available".
    Remap(
        "AllOnesWraps", [] { return OneType(7, "copy", UINT64_MAX); }, "-s added",
        "type,added\ncopy,18446744073709551612\n,18446744073709551612\n"),
};

INSTANTIATE_TEST_SUITE_P(Figures, AsyncRemapStats, testing::ValuesIn(kFiguresCases), NameOf<ReportCase>);

TEST(AsyncRemapStatsRows, StandBeforeTheMessagesOfWhatFollows) {
  StandinHost host = MachinesHost();
  host.Fail({.operation = "NODAL_Get", .node = "sched_memClients_remapTypes", .call = 4});
  const StandinRun run =
      RunKestrel(host, {"-r", "asyncremap-stats", "-q", "-s", "grpLeader"}, {.errorsToOutput = true});
  EXPECT_EQ(run.outcome.output,
            "grpLeader,type\n120,copy\n120,move\n120,zero\n"
            "KestrelAsyncRemapGetStats:140 failure: Failure\n"
            "KestrelAsyncRemapReportCallbackInt:310 failure: Failure\n"
            "KestrelAsyncRemapReportCallback:403 failure: Failure\n"
            "130,copy\n,\n");
}

// Each argument list is created with the capacity for exactly its arguments, and is used for one read only.
TEST(AsyncRemapStatsCalls, AGroupIsReadInAFixedOrder) {
  const StandinRun run = RunKestrel(MachinesHost(), {"-r", "asyncremap-stats", "-g", "20"});
  std::vector<std::string> calls = CallsThatCount(run);
  std::erase_if(calls, [](const std::string &call) { return call.starts_with("NODAL_ParamListDestroy"); });
  const auto isListOfTheGroup = [](const std::string &call) { return call.starts_with("NODAL_ParamListCreate(1, 1)"); };
  calls.erase(calls.begin(), std::find_if(calls.begin(), calls.end(), isListOfTheGroup));
  calls.resize(std::min<size_t>(calls.size(), 33));
  EXPECT_EQ(calls, Lines("NODAL_ParamListCreate(1, 1) = list5\n"
                         "NODAL_ParamListAddInt(list5, 20) = 0\n"
                         "NODAL_GetInstanceListAlloc(sched_groups_members_memClients, [20]) = 0 list6\n"
                         "NODAL_ParamListGetUInt32(list6, 0) = 0\n"
                         "NODAL_ParamListCreate(1, 1) = list7\n"
                         "NODAL_ParamListAddInt(list7, 120) = 0\n"
                         "NODAL_GetInstanceListAlloc(sched_memClients_remapTypes, [120]) = 0 list8\n"
                         "NODAL_ParamListGetString(list8, 0) = 0\n"
                         "NODAL_ParamListCreate(1, 2) = list9\n"
                         "NODAL_ParamListAddInt(list9, 120) = 0\n"
                         "NODAL_ParamListAddString(list9, \"copy\") = 0\n"
                         "NODAL_Get(sched_memClients_remapTypes, [120,\"copy\"], 80) = 0\n"
                         "NODAL_ParamListGetString(list8, 1) = 0\n"
                         "NODAL_ParamListCreate(1, 2) = list10\n"
                         "NODAL_ParamListAddInt(list10, 120) = 0\n"
                         "NODAL_ParamListAddString(list10, \"move\") = 0\n"
                         "NODAL_Get(sched_memClients_remapTypes, [120,\"move\"], 80) = 0\n"
                         "NODAL_ParamListGetString(list8, 2) = 0\n"
                         "NODAL_ParamListCreate(1, 2) = list11\n"
                         "NODAL_ParamListAddInt(list11, 120) = 0\n"
                         "NODAL_ParamListAddString(list11, \"zero\") = 0\n"
                         "NODAL_Get(sched_memClients_remapTypes, [120,\"zero\"], 80) = 0\n"
                         "NODAL_ParamListGetUInt32(list6, 1) = 0\n"
                         "NODAL_ParamListCreate(1, 1) = list12\n"
                         "NODAL_ParamListAddInt(list12, 121) = 0\n"
                         "NODAL_GetInstanceListAlloc(sched_memClients_remapTypes, [121]) = 0 list13\n"
                         "NODAL_ParamListGetString(list13, 0) = 0\n"
                         "NODAL_ParamListCreate(1, 2) = list14\n"
                         "NODAL_ParamListAddInt(list14, 121) = 0\n"
                         "NODAL_ParamListAddString(list14, \"copy\") = 0\n"
                         "NODAL_Get(sched_memClients_remapTypes, [121,\"copy\"], 80) = 0\n"
                         "NODAL_ParamListGetString(list13, 1) = 0\n"
                         "NODAL_ParamListCreate(1, 2) = list15\n"));
}

}  // namespace
}  // namespace faults::asyncremap_stats
