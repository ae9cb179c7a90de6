// The clients of a user world and the remap types of each, with every way in which their reads fail.
#include <algorithm>

#include "tests/faults/hosts.h"
#include "tests/faults/report_case.h"

namespace faults {
namespace {

constexpr char kCreate[] = "NODAL_ParamListCreate";
constexpr char kAdd[] = "NODAL_ParamListAddInt";
constexpr char kAddString[] = "NODAL_ParamListAddString";
constexpr char kList[] = "NODAL_GetInstanceListAlloc";
constexpr char kGetUInt32[] = "NODAL_ParamListGetUInt32";
constexpr char kGetString[] = "NODAL_ParamListGetString";
constexpr char kGet[] = "NODAL_Get";

constexpr char kHeader[] = "name,grpLeader,type,added,cStaged\n";
constexpr char kMailRow[] = "mail,130,copy,520004,520036\n";

// The rows of shell in their order, and what they come to so far: alone, and with mail's.
constexpr const char *kRows[] = {"shell,120,copy,480004,480036\n", "shell,120,move,960004,960036\n",
                                 "shell,120,zero,1440004,1440036\n", "shell,121,copy,484004,484036\n",
                                 "shell,121,move,968004,968036\n"};
constexpr const char *kTotals[] = {",,,0,0\n",
                                   ",,,480004,480036\n",
                                   ",,,1440008,1440072\n",
                                   ",,,2880012,2880108\n",
                                   ",,,3364016,3364144\n",
                                   ",,,4332020,4332180\n"};
constexpr const char *kTotalsWithMail[] = {",,,520004,520036\n",   ",,,1000008,1000072\n", ",,,1960012,1960108\n",
                                           ",,,3400016,3400144\n", ",,,3884020,3884180\n", ",,,4852024,4852216\n"};

std::string Rows(unsigned count) {
  std::string rows;
  for (unsigned i = 0; i < count; ++i)
    rows += kRows[i];
  return rows;
}

// What is said of a failure, from the innermost step outwards.
std::string Messages(const std::vector<std::string> &steps, const char *text) {
  std::string messages;
  for (const std::string &step : steps)
    messages += step + " failure: " + text + "\n";
  return messages;
}

const std::vector<std::string> kNoMessages = {};
const std::string kGroup = "KestrelAsyncRemapReportCallback:";
const std::string kClient = "KestrelAsyncRemapReportCallbackInt:";
const std::string kType = "KestrelAsyncRemapGetStats:";

// A call about shell that fails. Calls are counted from the one that lists shell's children; the reads of its flags and
// its name come next.
struct Step {
  const char *name;  // of the test
  const char *operation;
  unsigned call;
  unsigned rowsBefore;
  std::vector<std::string> messages;
};

void PrintTo(const Step &step, std::ostream *stream) { *stream << step.name; }

class AsyncRemapStep : public testing::TestWithParam<Step> {
 protected:
  // As many calls of the operation as the walk makes before it comes to shell: for groups 0, 10 and 11.
  static unsigned CallsBeforeShell(const std::string &operation) {
    if (operation == kCreate || operation == kAdd) return 6;
    return operation == kList || operation == kGet ? 3 : 0;
  }

  static bool AnswersWithAStatus() { return GetParam().operation != std::string(kCreate); }
};

struct Status {
  HVC_ReturnStatus status;
  const char *text;
};

constexpr Status kStatuses[] = {{0x0bad0001, "Failure"},
                                {0x0bad0003, "Not found"},
                                {0x0bad0031, "Not initialized"},
                                {0x2bad0000, "Opaque service console status"}};

TEST_P(AsyncRemapStep, FailsAtTheStartGroup) {
  const Step &step = GetParam();
  for (const Status &status : kStatuses) {
    StandinHost host = MachinesHost();
    host.Fail({.operation = step.operation, .call = step.call, .status = status.status});
    Check({step.name,
           host,
           {"-r", "asyncremap-stats", "-q", "-s", "name:grpLeader:added:cStaged", "-g", "20"},
           kHeader + Rows(step.rowsBefore) + kTotals[step.rowsBefore],
           Messages(step.messages, AnswersWithAStatus() ? status.text : "Failure"),
           1});
  }
}

TEST_P(AsyncRemapStep, FailsBelowTheStartGroup) {
  const Step &step = GetParam();
  for (const Status &status : kStatuses) {
    StandinHost host = MachinesHost();
    host.Fail(
        {.operation = step.operation, .call = CallsBeforeShell(step.operation) + step.call, .status = status.status});
    const StandinRun run = Check({step.name,
                                  host,
                                  {"-r", "asyncremap-stats", "-q", "-s", "name:grpLeader:added:cStaged"},
                                  kHeader + Rows(step.rowsBefore) + kMailRow + kTotalsWithMail[step.rowsBefore],
                                  Messages(step.messages, AnswersWithAStatus() ? status.text : "Failure"),
                                  0});
    for (const std::string &call : run.calls)
      EXPECT_EQ(call.find("sched_groups_members_groups, [21]"), call.npos) << call;
  }
}

INSTANTIATE_TEST_SUITE_P(Clients, AsyncRemapStep,
                         testing::Values(Step{"NoListForTheGroup", kCreate, 4, 0, kNoMessages},
                                         Step{"TheGroupIsNotAdded", kAdd, 4, 0, {kGroup + "394"}},
                                         Step{"ClientsNotListed", kList, 2, 0, {kGroup + "396"}},
                                         Step{"NoIdOfTheFirstClient", kGetUInt32, 1, 0, {kGroup + "401"}},
                                         Step{"NoIdOfTheSecondClient", kGetUInt32, 2, 3, {kGroup + "401"}}),
                         NameOf<Step>);

INSTANTIATE_TEST_SUITE_P(
    OneClient, AsyncRemapStep,
    testing::Values(Step{"NoListForTheFirst", kCreate, 5, 0, {kGroup + "403"}},
                    Step{"NoListForTheSecond", kCreate, 9, 3, {kGroup + "403"}},
                    Step{"TheFirstIsNotAdded", kAdd, 5, 0, {kClient + "303", kGroup + "403"}},
                    Step{"TheSecondIsNotAdded", kAdd, 9, 3, {kClient + "303", kGroup + "403"}},
                    Step{"TypesOfTheFirstNotListed", kList, 3, 0, {kClient + "305", kGroup + "403"}},
                    Step{"TypesOfTheSecondNotListed", kList, 4, 3, {kClient + "305", kGroup + "403"}},
                    Step{"NoNameOfTheFirstType", kGetString, 1, 0, {kClient + "308", kGroup + "403"}},
                    Step{"NoNameOfTheSecondType", kGetString, 2, 1, {kClient + "308", kGroup + "403"}},
                    Step{"NoNameOfTheLastType", kGetString, 5, 4, {kClient + "308", kGroup + "403"}}),
    NameOf<Step>);

INSTANTIATE_TEST_SUITE_P(
    OneType, AsyncRemapStep,
    testing::Values(
        Step{"NoListForTheFirst", kCreate, 6, 0, {kClient + "310", kGroup + "403"}},
        Step{"NoListForTheThird", kCreate, 8, 2, {kClient + "310", kGroup + "403"}},
        Step{"NoListForTheFirstOfTheSecond", kCreate, 10, 3, {kClient + "310", kGroup + "403"}},
        Step{"TheClientIsNotAdded", kAdd, 6, 0, {kType + "137", kClient + "310", kGroup + "403"}},
        Step{"TheClientIsNotAddedForTheLast", kAdd, 11, 4, {kType + "137", kClient + "310", kGroup + "403"}},
        Step{"TheNameIsNotAdded", kAddString, 1, 0, {kType + "138", kClient + "310", kGroup + "403"}},
        Step{"TheSecondNameIsNotAdded", kAddString, 2, 1, {kType + "138", kClient + "310", kGroup + "403"}},
        Step{"TheLastNameIsNotAdded", kAddString, 5, 4, {kType + "138", kClient + "310", kGroup + "403"}},
        Step{"TheFirstIsUnreadable", kGet, 3, 0, {kType + "140", kClient + "310", kGroup + "403"}},
        Step{"TheThirdIsUnreadable", kGet, 5, 2, {kType + "140", kClient + "310", kGroup + "403"}},
        Step{"TheFirstOfTheSecondIsUnreadable", kGet, 6, 3, {kType + "140", kClient + "310", kGroup + "403"}},
        Step{"TheLastIsUnreadable", kGet, 7, 4, {kType + "140", kClient + "310", kGroup + "403"}}),
    NameOf<Step>);

class AsyncRemapStats : public testing::TestWithParam<ReportCase> {};

TEST_P(AsyncRemapStats, AnswersAs) { Check(GetParam()); }

ReportCase Remap(const char *name, const StandinHost &host, const std::vector<std::string> &options,
                 const std::string &output, const std::string &errors = "", int exitStatus = 0) {
  std::vector<std::string> arguments = {"-r", "asyncremap-stats", "-q"};
  arguments.insert(arguments.end(), options.begin(), options.end());
  return {name, host, arguments, output, errors, exitStatus};
}

StandinHost OneUserWorld() { return StandinHost().Add({.id = 0, .name = "shell", .flags = HVC_GROUP_USER_WORLD}); }

// One client of one type, as many pages of which were added as are given; the type's name may be missing.
StandinHost OneType(int64_t client, const testing_support::Instance &type, uint64_t pages) {
  RemapStatsRecord record = {};
  record.added = pages;
  StandinHost host = OneUserWorld();
  host.AddList("sched_groups_members_memClients", {0L}, {client});
  host.AddList("sched_memClients_remapTypes", {client}, {type});
  host.AddRecord("sched_memClients_remapTypes", {client, type}, record);
  return host;
}

// The library may hand out a text that is missing, and take it again; either as it is or as an empty one.
StandinHost WithoutTypeName() {
  RemapStatsRecord record = {};
  record.added = 1;
  return OneType(7, nullptr, 1).AddRecord("sched_memClients_remapTypes", {int64_t{7}, ""}, record);
}

INSTANTIATE_TEST_SUITE_P(
    Lists, AsyncRemapStats,
    testing::Values(
        Remap("NoClients", OneUserWorld().AddList("sched_groups_members_memClients", {0L}, {}), {"-s", "added"},
              "type,added\n,0\n"),
        Remap("NoTypes",
              OneUserWorld()
                  .AddList("sched_groups_members_memClients", {0L}, {int64_t{7}})
                  .AddList("sched_memClients_remapTypes", {int64_t{7}}, {}),
              {"-s", "added"}, "type,added\n,0\n"),
        Remap("AClientThatVanishedIsReported",
              OneUserWorld().AddList("sched_groups_members_memClients", {0L}, {int64_t{7}}), {"-s", "added"},
              "type,added\n,0\n",
              "KestrelAsyncRemapReportCallbackInt:305 failure: Not found\n"
              "KestrelAsyncRemapReportCallback:403 failure: Not found\n",
              1),
        Remap("TypeWithoutAName", WithoutTypeName(), {"-s", "name:added"}, "name,type,added\nshell,,4\n,,4\n"),
        Remap("TypeWithAnEmptyName", OneType(7, "", 1), {"-s", "name:added"}, "name,type,added\nshell,,4\n,,4\n"),
        Remap("AClientIdIsUnsigned", OneType(4294967295, "copy", 1), {"-s", "grpLeader:added"},
              "grpLeader,type,added\n-1,copy,4\n,,4\n")),
    NameOf<ReportCase>);

INSTANTIATE_TEST_SUITE_P(Figures, AsyncRemapStats,
                         testing::Values(Remap("OnePageInKb", OneType(7, "copy", 1), {"-s", "added"},
                                               "type,added\ncopy,4\n,4\n"),
                                         Remap("OnePageInMb", OneType(7, "copy", 1), {"-s", "added", "-u", "mb"},
                                               "type,added\ncopy,1\n,1\n"),
                                         Remap("OnePageInPages", OneType(7, "copy", 1), {"-s", "added", "-u", "pg"},
                                               "type,added\ncopy,1\n,1\n"),
                                         // Pages times four never come to all ones.
                                         Remap("AllOnesWraps", OneType(7, "copy", UINT64_MAX), {"-s", "added"},
                                               "type,added\ncopy,18446744073709551612\n,18446744073709551612\n")),
                         NameOf<ReportCase>);

TEST(AsyncRemapStatsRows, StandBeforeTheMessagesOfWhatFollows) {
  StandinHost host = MachinesHost();
  host.Fail({.operation = kGet, .node = "sched_memClients_remapTypes", .call = 4});
  const StandinRun run =
      RunKestrel(host, {"-r", "asyncremap-stats", "-q", "-s", "grpLeader"}, {.errorsToOutput = true});
  EXPECT_EQ(run.outcome.output,
            "grpLeader,type\n120,copy\n120,move\n120,zero\n"
            "KestrelAsyncRemapGetStats:140 failure: Failure\n"
            "KestrelAsyncRemapReportCallbackInt:310 failure: Failure\n"
            "KestrelAsyncRemapReportCallback:403 failure: Failure\n"
            "130,copy\n,\n");
}

// Argument lists have room for what they take, and are handed to one read each.
TEST(AsyncRemapStatsCalls, AGroupIsReadInAFixedOrder) {
  const StandinRun run = RunKestrel(MachinesHost(), {"-r", "asyncremap-stats", "-g", "20"});
  std::vector<std::string> calls = CallsThatCount(run);
  std::erase_if(calls, [](const std::string &call) { return call.starts_with("NODAL_ParamListDestroy"); });
  const auto isListOfTheGroup = [](const std::string &call) { return call.starts_with("NODAL_ParamListCreate(1, 1)"); };
  calls.erase(calls.begin(), std::find_if(calls.begin(), calls.end(), isListOfTheGroup));
  calls.resize(std::min<size_t>(calls.size(), 33));
  EXPECT_EQ(calls, (std::vector<std::string>{
                       "NODAL_ParamListCreate(1, 1) = list5",
                       "NODAL_ParamListAddInt(list5, 20) = 0",
                       "NODAL_GetInstanceListAlloc(sched_groups_members_memClients, [20]) = 0 list6",
                       "NODAL_ParamListGetUInt32(list6, 0) = 0",
                       "NODAL_ParamListCreate(1, 1) = list7",
                       "NODAL_ParamListAddInt(list7, 120) = 0",
                       "NODAL_GetInstanceListAlloc(sched_memClients_remapTypes, [120]) = 0 list8",
                       "NODAL_ParamListGetString(list8, 0) = 0",
                       "NODAL_ParamListCreate(1, 2) = list9",
                       "NODAL_ParamListAddInt(list9, 120) = 0",
                       "NODAL_ParamListAddString(list9, \"copy\") = 0",
                       "NODAL_Get(sched_memClients_remapTypes, [120,\"copy\"], 80) = 0",
                       "NODAL_ParamListGetString(list8, 1) = 0",
                       "NODAL_ParamListCreate(1, 2) = list10",
                       "NODAL_ParamListAddInt(list10, 120) = 0",
                       "NODAL_ParamListAddString(list10, \"move\") = 0",
                       "NODAL_Get(sched_memClients_remapTypes, [120,\"move\"], 80) = 0",
                       "NODAL_ParamListGetString(list8, 2) = 0",
                       "NODAL_ParamListCreate(1, 2) = list11",
                       "NODAL_ParamListAddInt(list11, 120) = 0",
                       "NODAL_ParamListAddString(list11, \"zero\") = 0",
                       "NODAL_Get(sched_memClients_remapTypes, [120,\"zero\"], 80) = 0",
                       "NODAL_ParamListGetUInt32(list6, 1) = 0",
                       "NODAL_ParamListCreate(1, 1) = list12",
                       "NODAL_ParamListAddInt(list12, 121) = 0",
                       "NODAL_GetInstanceListAlloc(sched_memClients_remapTypes, [121]) = 0 list13",
                       "NODAL_ParamListGetString(list13, 0) = 0",
                       "NODAL_ParamListCreate(1, 2) = list14",
                       "NODAL_ParamListAddInt(list14, 121) = 0",
                       "NODAL_ParamListAddString(list14, \"copy\") = 0",
                       "NODAL_Get(sched_memClients_remapTypes, [121,\"copy\"], 80) = 0",
                       "NODAL_ParamListGetString(list13, 1) = 0",
                       "NODAL_ParamListCreate(1, 2) = list15",
                   }));
}

}  // namespace
}  // namespace faults
