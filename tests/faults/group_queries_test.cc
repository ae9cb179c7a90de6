// The getters of leaders, of a VM's allocation, and of memory clients.
#include "tests/faults/hosts.h"
#include "tests/faults/report_case.h"

namespace faults::group_queries {
namespace {

constexpr char kCreate[] = "NODAL_ParamListCreate";
constexpr char kAdd[] = "NODAL_ParamListAddInt";
constexpr char kGet[] = "NODAL_Get";
constexpr char kList[] = "NODAL_GetInstanceListAlloc";
constexpr char kGetInt64[] = "NODAL_ParamListGetInt64";

constexpr char kNoGroupList[] = "KestrelGroupNodalGet: NODAL_ParamListCreate() failure\n";
constexpr char kUntouched[] = "min 77 max 77 shares 77 minLimit 77\n";

GroupAllocRecord Alloc(uint64_t min, uint64_t max, int32_t shares, uint64_t minLimit) {
  return {.min = min, .max = max, .shares = shares, .minLimit = minLimit, .unread_28 = {}};
}

// A VM with three children: a user world, its VMM, and a second VMM. It also has a memory client.
StandinHost VmHost() {
  StandinHost host;
  host.Add({.id = 10,
            .name = "vm",
            .flags = HVC_GROUP_VM,
            .children = {int64_t{11}, int64_t{12}, int64_t{13}},
            .alloc = Alloc(1, 2, -3, 4)});
  host.Add({.id = 11, .name = "uw", .flags = HVC_GROUP_UW_SUB_CONTAINER, .alloc = Alloc(111, 112, 113, 114)});
  host.Add({.id = 12, .name = "vmm", .flags = HVC_GROUP_VMM_SUB_CONTAINER, .alloc = Alloc(121, 122, 123, 124)});
  host.Add({.id = 13, .name = "second", .flags = HVC_GROUP_VMM_SUB_CONTAINER, .alloc = Alloc(131, 132, 133, 134)});
  host.AddRecord("sched_groups_groupLeaderID", {int64_t{10}}, GroupLeaderIDRecord{4294967295u});
  host.AddRecord("worldGroups_vmmLeaderID", {int64_t{4294967295}}, VmmLeaderIDRecord{501});
  TotalCommonRecord common = {};
  common.unread_0[0] = 9;
  host.AddRecord("sched_memClients_kestrel_totalCommon", {int64_t{500}}, common);
  return host;
}

StandinHost VmHost(const std::vector<Fault> &faults) {
  StandinHost host = VmHost();
  for (const Fault &fault : faults)
    host.Fail(fault);
  return host;
}

struct Query {
  const char *name;  // of the test
  StandinHost host;
  std::vector<std::string> arguments;
  std::string output;
  std::string errors;
};

void PrintTo(const Query &query, std::ostream *stream) { *stream << query.name; }

class GroupQuery : public testing::TestWithParam<Query> {};

TEST_P(GroupQuery, Answers) {
  const Query &query = GetParam();
  const StandinRun run = RunKestrel(query.host, query.arguments, {.program = QUERY_PROGRAM});
  EXPECT_EQ(run.outcome.output, query.output);
  EXPECT_EQ(run.outcome.errors, query.errors);
  EXPECT_EQ(run.outcome.exitStatus, 0) << run;
  EXPECT_EQ(ListErrors(run), "") << run;
}

Query Leader(const char *name, const std::vector<Fault> &faults, uint32_t leader, const char *status,
             const std::string &errors, const char *group = "10") {
  return {name,
          VmHost(faults),
          {"leader", group},
          "leader " + std::to_string(leader) + "\nstatus " + status + "\n",
          errors};
}

INSTANTIATE_TEST_SUITE_P(
    Leader, GroupQuery,
    testing::Values(
        Leader("OfAVm", {}, 4294967295u, "0", ""), Leader("OtherGroupsHaveNone", {}, 0, "0xbad0007", "", "11"),
        Leader("OfAVanishedGroup", {}, 0, "0xbad0003", "", "99"),
        Leader("FlagsNotInitialized", {{.operation = kGet, .call = 1, .status = 0x0bad0031}}, 0, "0xbad0031", ""),
        Leader("FlagsUnreadable", {{.operation = kGet, .call = 1}}, 0, "0xbad0001",
               "Kestrel_GroupGetFlags() failure, error code: 195887105\n"),
        Leader("NotFoundIsReported", {{.operation = kGet, .call = 2, .status = 0x0bad0003}}, 0, "0xbad0003",
               "Kestrel_GroupGetGroupLeaderID() failure, error code: 195887107\n"),
        Leader("Unreadable", {{.operation = kGet, .call = 2}}, 0, "0xbad0001",
               "Kestrel_GroupGetGroupLeaderID() failure, error code: 195887105\n"),
        Leader("NoList", {{.operation = kCreate, .call = 2}}, 0, "0xbad0001",
               std::string(kNoGroupList) + "Kestrel_GroupGetGroupLeaderID() failure, error code: 195887105\n"),
        Leader("NotAdded", {{.operation = kAdd, .call = 2, .status = 0x0bad0014}}, 0, "0xbad0014",
               "KestrelGroupNodalGet: NODAL_ParamListAddInt() faiure, error code: 195887124\n"
               "Kestrel_GroupGetGroupLeaderID() failure, error code: 195887124\n")),
    NameOf<Query>);

Query VmmAlloc(const char *name, const std::vector<Fault> &faults, const std::string &alloc, const char *status,
               const std::string &errors, const char *group = "10") {
  return {name, VmHost(faults), {"vmmAlloc", group}, alloc + "status " + status + "\n", errors};
}

// Reads the list of children, the flags of 11 and 12, and the allocations of 10 and 12.
INSTANTIATE_TEST_SUITE_P(
    VmmAlloc, GroupQuery,
    testing::Values(VmmAlloc("OfAVm", {}, "min 121 max 122 shares -3 minLimit 4\n", "0", ""),
                    VmmAlloc("WithoutChildren", {}, kUntouched, "0xbad0003", "", "12"),
                    VmmAlloc("NoList", {{.operation = kCreate, .call = 1}}, kUntouched, "0xbad0001", kNoGroupList),
                    VmmAlloc("NotAdded", {{.operation = kAdd, .call = 1, .status = 0x0bad0003}}, kUntouched,
                             "0xbad0003", "Kestrel_GroupGetVMMAlloc: NODAL_ParamListAddInt() failure: Not found\n"),
                    VmmAlloc("NotListed", {{.operation = kList, .status = 4}}, kUntouched, "0x4",
                             "Kestrel_GroupGetVMMAlloc: GetInstanceListAlloc failure: Busy\n"),
                    VmmAlloc("AVanishedVmIsReported", {}, kUntouched, "0xbad0003",
                             "Kestrel_GroupGetVMMAlloc: GetInstanceListAlloc failure: Not found\n", "99"),
                    VmmAlloc("AnUnreadableIdIsPassedOver", {{.operation = kGetInt64, .call = 2}},
                             "min 131 max 132 shares -3 minLimit 4\n", "0", ""),
                    VmmAlloc("AVanishedChildIsPassedOver", {{.operation = kGet, .call = 2, .status = 0x0bad0003}},
                             "min 131 max 132 shares -3 minLimit 4\n", "0", ""),
                    VmmAlloc("UnreadableFlagsArePassedOver", {{.operation = kGet, .call = 2}},
                             "min 131 max 132 shares -3 minLimit 4\n", "0",
                             "Kestrel_GroupGetFlags() failure, error code: 195887105\n"),
                    VmmAlloc("NoChildQualifies", {{.operation = kGetInt64}}, kUntouched, "0xbad0003", ""),
                    VmmAlloc("TheVmVanished", {{.operation = kGet, .call = 3, .status = 0x0bad0003}}, kUntouched,
                             "0xbad0003",
                             "Kestrel_GroupGetVMMAlloc: VM GroupGetAlloc failure, error code: 195887107\n"),
                    VmmAlloc("TheVmIsUnreadable", {{.operation = kGet, .call = 3}}, kUntouched, "0xbad0001",
                             "Kestrel_GroupGetAlloc() failure, error code: 195887105\n"
                             "Kestrel_GroupGetVMMAlloc: VM GroupGetAlloc failure, error code: 195887105\n"),
                    VmmAlloc("TheChildVanished", {{.operation = kGet, .call = 4, .status = 0x0bad0003}}, kUntouched,
                             "0xbad0003", "Kestrel_GroupGetVMMAlloc: GroupGetAlloc failure, error code: 195887107\n"),
                    VmmAlloc("TheChildIsUnreadable", {{.operation = kGet, .call = 4, .status = 0x0bad0031}}, kUntouched,
                             "0xbad0031",
                             "Kestrel_GroupGetAlloc() failure, error code: 195887153\n"
                             "Kestrel_GroupGetVMMAlloc: GroupGetAlloc failure, error code: 195887153\n")),
    NameOf<Query>);

// -1 is not a group, even if a child with this ID has the VMM flag.
INSTANTIATE_TEST_SUITE_P(VmmAllocOfNoGroup, GroupQuery,
                         testing::Values(Query{
                             "AllOnes",
                             StandinHost()
                                 .Add({.id = 10, .flags = HVC_GROUP_VM, .children = {int64_t{-1}, int64_t{12}}})
                                 .Add({.id = -1, .flags = HVC_GROUP_VMM_SUB_CONTAINER})
                                 .Add({.id = 12, .flags = HVC_GROUP_VMM_SUB_CONTAINER}),
                             {"vmmAlloc", "10"},
                             std::string(kUntouched) + "status 0xbad0003\n",
                             ""}),
                         NameOf<Query>);

Query Client(const char *name, const char *query, const char *client, const std::vector<Fault> &faults,
             const std::string &output, const std::string &errors) {
  return {name, VmHost(faults), {query, client}, output, errors};
}

constexpr char kNoClientList[] = "Kestrel_MemClientNodalGet: NODAL_ParamListCreate() failure\n";
constexpr char kClientNotAdded[] = "Kestrel_MemClientNodalGet: NODAL_ParamListAddInt() failure: Out of memory\n";

INSTANTIATE_TEST_SUITE_P(
    MemClient, GroupQuery,
    testing::Values(
        // IDs are unsigned, in arguments too.
        Client("VmmLeader", "vmmLeader", "4294967295", {}, "vmm leader 501\nstatus 0\n", ""),
        Client("VmmLeaderVanished", "vmmLeader", "1", {}, "vmm leader 77\nstatus 0xbad0003\n", ""),
        Client("VmmLeaderUnreadable", "vmmLeader", "4294967295", {{.operation = kGet, .status = 0x0bad0031}},
               "vmm leader 77\nstatus 0xbad0031\n", "Kestrel_GetVmmLeaderID() failure: Not initialized\n"),
        Client("VmmLeaderNoList", "vmmLeader", "1", {{.operation = kCreate}}, "vmm leader 77\nstatus 0xbad0001\n",
               std::string(kNoClientList) + "Kestrel_GetVmmLeaderID() failure: Failure\n"),
        Client("VmmLeaderNotAdded", "vmmLeader", "1", {{.operation = kAdd, .status = 0x0bad0014}},
               "vmm leader 77\nstatus 0xbad0014\n",
               std::string(kClientNotAdded) + "Kestrel_GetVmmLeaderID() failure: Out of memory\n"),
        Client("TotalCommon", "totalCommon", "500", {}, "first byte 9\nstatus 0\n", ""),
        Client("TotalCommonVanished", "totalCommon", "1", {}, "first byte 0\nstatus 0xbad0003\n", ""),
        Client("TotalCommonUnreadable", "totalCommon", "500", {{.operation = kGet}}, "first byte 0\nstatus 0xbad0001\n",
               "Kestrel_MemClientGetTotalCommonStats() failure: Failure\n"),
        Client("TotalCommonNotAdded", "totalCommon", "1", {{.operation = kAdd, .status = 0x0bad0014}},
               "first byte 0\nstatus 0xbad0014\n",
               std::string(kClientNotAdded) + "Kestrel_MemClientGetTotalCommonStats() failure: Out of memory\n")),
    NameOf<Query>);

}  // namespace
}  // namespace faults::group_queries
