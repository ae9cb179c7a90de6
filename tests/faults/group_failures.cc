// The failures of the per-group reports.
#include "tests/faults/failure_rows.h"
#include "tests/faults/hosts.h"

namespace faults {
namespace {

using enum Effect;

constexpr HVC_ReturnStatus kNotFound = 0x0bad0003;
constexpr HVC_ReturnStatus kNotInitialized = 0x0bad0031;

constexpr char kCreate[] = "NODAL_ParamListCreate";
constexpr char kAddInt[] = "NODAL_ParamListAddInt";
constexpr char kAddString[] = "NODAL_ParamListAddString";
constexpr char kRemove[] = "NODAL_ParamListRemoveLastParam";
constexpr char kGet[] = "NODAL_Get";
constexpr char kList[] = "NODAL_GetInstanceListAlloc";
constexpr char kGetInt64[] = "NODAL_ParamListGetInt64";

Messages Joined(const Messages &first, const Messages &rest) {
  Messages all = first;
  all.insert(all.end(), rest.begin(), rest.end());
  return all;
}

FailureTable Joined(const std::vector<FailureTable> &tables) {
  FailureTable all;
  for (const FailureTable &table : tables)
    all.insert(all.end(), table.begin(), table.end());
  return all;
}

// The failures of the `number`-th read of a group's record during a visit.
FailureTable OfGroup(const std::string &name, unsigned number, const Messages &failed) {
  const std::string node = "sched_groups_" + name;
  return {
      {kCreate, node, number, Joined({{"KestrelGroupNodalGet: NODAL_ParamListCreate() failure\n"}}, failed),
       kLosesGroup},
      {kAddInt, node, number,
       Joined({{"KestrelGroupNodalGet: NODAL_ParamListAddInt() faiure, error code: <number>\n"}}, failed), kLosesGroup},
      {kGet, node, number, failed, kLosesGroup},
      {kRemove, node, number}};
}

FailureTable OfClient(const std::string &node, const Message &failed) {
  return {{kCreate, node, 1, {{"Kestrel_MemClientNodalGet: NODAL_ParamListCreate() failure\n"}, failed}, kLosesGroup},
          {kAddInt,
           node,
           1,
           {{"Kestrel_MemClientNodalGet: NODAL_ParamListAddInt() failure: <text>\n"}, failed},
           kLosesGroup},
          {kGet, node, 1, {failed}, kLosesGroup},
          {kRemove, node, 1}};
}

Message Getter(const std::string &name, const std::vector<HVC_ReturnStatus> &silent = {}) {
  return {name + "() failure, error code: <number>\n", silent};
}

FailureTable Flags(unsigned number) {
  return OfGroup("groupFlags", number, {Getter("Kestrel_GroupGetFlags", {kNotFound, kNotInitialized})});
}

FailureTable Name() { return OfGroup("groupName", 1, {Getter("Kestrel_GroupGetName")}); }

FailureTable Parent() { return OfGroup("parentGroupID", 1, {Getter("Kestrel_GroupGetParentID", {kNotFound})}); }

FailureTable MemoryStats() {
  return OfGroup("stats_memoryStats", 1, {Getter("KestrelGroupGetMemoryStats", {kNotFound})});
}

FailureTable Alloc(unsigned number, const Messages &caller) {
  return OfGroup("memAllocationInKB", number, Joined({Getter("Kestrel_GroupGetAlloc", {kNotFound})}, caller));
}

const std::string kChildren = ListOf("sched_groups_members_groups");

FailureTable Children(unsigned number, const Message &notAdded, const Message &notListed, Effect ofChild) {
  return {{kCreate, kChildren, number, {{"KestrelGroupNodalGet: NODAL_ParamListCreate() failure\n"}}, kLosesGroup},
          {kAddInt, kChildren, number, {notAdded}, kLosesGroup},
          {kList, kChildren, number, {notListed}, kLosesGroup},
          {kRemove, kChildren, number},
          {kGetInt64, kChildren, number, {}, ofChild}};
}

FailureTable Walk() {
  return Joined(
      {Children(1, {"KestrelTraverseGroups: NODAL_ParamListAddInt() failure: <text>\n"},
                {"KestrelTraverseGroups: NODAL_GetInstanceListAlloc failure: <text>\n", {kNotFound}}, kLosesChild),
       Flags(1)});
}

// The flags are read again, since only some groups have a leader.
FailureTable Head() {
  return Joined(
      {Walk(), Name(), Parent(), Flags(2), OfGroup("groupLeaderID", 1, {Getter("Kestrel_GroupGetGroupLeaderID")})});
}

// The VMM is the first child with the VMM flag; without such a child, there is no allocation.
FailureTable VmmAlloc() {
  // A child without an ID or flags is skipped.
  FailureTable children = Children(2, {"Kestrel_GroupGetVMMAlloc: NODAL_ParamListAddInt() failure: <text>\n"},
                                   {"Kestrel_GroupGetVMMAlloc: GetInstanceListAlloc failure: <text>\n"}, kLosesGroup);
  FailureTable flags = Flags(3);
  children.back().readsOn = true;
  for (FailureRow &row : flags)
    row.readsOn = true;
  return Joined({children, flags,
                 Alloc(1, {{"Kestrel_GroupGetVMMAlloc: VM GroupGetAlloc failure, error code: <number>\n"}}),
                 Alloc(2, {{"Kestrel_GroupGetVMMAlloc: GroupGetAlloc failure, error code: <number>\n"}})});
}

constexpr char kVmm[] = "sched_memClients_kestrel_vmm";
constexpr char kUserWorld[] = "sched_memClients_kestrel_uw";
constexpr char kGuest[] = "sched_memClients_kestrel_guest";
constexpr char kZip[] = "sched_memClients_memzipInfo";
constexpr char kSwap[] = "sched_memClients_swapInfo";
constexpr char kLPage[] = "memory_lpage_vmLPage";
constexpr char kMemoryStats[] = "sched_groups_stats_memoryStats";
constexpr char kRemap[] = "sched_memClients_remapTypes";

FailureTable Figures(const char *node, const char *reader) { return OfClient(node, Getter(reader, {kNotFound})); }

FailureTable VmmLeader() {
  return OfClient("worldGroups_vmmLeaderID", {"Kestrel_GetVmmLeaderID() failure: <text>\n", {kNotFound}});
}

// Each caller of a failed step prints a message of its own.
FailureTable RemapSteps() {
  const Message group = {"KestrelAsyncRemapReportCallback:403 failure: <text>\n"};
  const Message type = {"KestrelAsyncRemapReportCallbackInt:310 failure: <text>\n"};
  const auto ofGroup = [](int line) {
    return Messages{{"KestrelAsyncRemapReportCallback:" + std::to_string(line) + " failure: <text>\n"}};
  };
  const auto ofClient = [group](int line) {
    return Messages{{"KestrelAsyncRemapReportCallbackInt:" + std::to_string(line) + " failure: <text>\n"}, group};
  };
  const auto ofType = [group, type](int line) {
    return Messages{{"KestrelAsyncRemapGetStats:" + std::to_string(line) + " failure: <text>\n"}, type, group};
  };
  const std::string clients = ListOf("sched_groups_members_memClients");
  const std::string types = ListOf(kRemap);
  return {{kCreate, clients, 0, {}, kLosesGroup},
          {kAddInt, clients, 0, ofGroup(394), kLosesGroup},
          {kList, clients, 0, ofGroup(396), kLosesGroup},
          {"NODAL_ParamListGetUInt32", clients, 0, ofGroup(401), kLosesGroup},
          {kCreate, types, 0, {group}, kLosesGroup},
          {kAddInt, types, 0, ofClient(303), kLosesGroup},
          {kList, types, 0, ofClient(305), kLosesGroup},
          {"NODAL_ParamListGetString", types, 0, ofClient(308), kLosesGroup},
          {kCreate, kRemap, 0, {type, group}, kLosesGroup},
          {kAddInt, kRemap, 0, ofType(137), kLosesGroup},
          {kAddString, kRemap, 0, ofType(138), kLosesGroup},
          {kGet, kRemap, 0, ofType(140), kLosesGroup}};
}

Report OverGroups(const char *name, std::vector<std::string> arguments, const FailureTable &table,
                  const std::string &rowRead, Total total) {
  arguments.insert(arguments.begin(), "-r");
  return {.name = name,
          .host = OwnersHost,
          .arguments = arguments,
          .table = table,
          .rowReads = {rowRead},
          .total = total,
          .parts = Parts::kGroups,
          .sharedColumns = {"nChild"}};
}

}  // namespace

std::vector<Report> GroupReports() {
  const FailureTable groupStats =
      Joined({Walk(), Name(), OfGroup("groupTag", 1, {Getter("Kestrel_GroupGetTag")}), Parent(), Alloc(1, {}),
              OfGroup("stats_capacity", 1, {Getter("KestrelGroupGetCapacity", {kNotFound})}), MemoryStats()});
  const FailureTable vmStats = Joined({Head(), VmmAlloc(), Figures(kVmm, "KestrelVMGetVMMStats"), VmmLeader(),
                                       Figures(kSwap, "KestrelVMGetSwapStats"), MemoryStats()});
  const FailureTable uwStats = Joined({Head(), Figures(kUserWorld, "KestrelUWGetUWStats")});
  const FailureTable swapStats =
      Joined({Head(), VmmLeader(), Figures(kSwap, "KestrelSwapGetSwapStats"), Figures(kVmm, "KestrelVMGetVMMStats")});
  const FailureTable guestStats = Joined({Head(), Figures(kGuest, "KestrelGuestGetStats")});
  const FailureTable zipStats = Joined({Head(), Figures(kZip, "KestrelZipGetZipStats")});
  const FailureTable lpageStats = Joined({Head(), VmmLeader(), Figures(kLPage, "KestrelLPageGetLPageStats")});
  const FailureTable remapStats = Joined({Walk(), Name(), RemapSteps()});
  return {OverGroups("GroupStats", {"group-stats"}, groupStats, kMemoryStats, Total::kNone),
          OverGroups("VmStats", {"vm-stats"}, vmStats, kMemoryStats, Total::kAdded),
          OverGroups("UwStats", {"uw-stats"}, uwStats, kUserWorld, Total::kAdded),
          OverGroups("SwapStats", {"swap-stats"}, swapStats, kVmm, Total::kAdded),
          OverGroups("GuestStats", {"guest-stats"}, guestStats, kGuest, Total::kAdded),
          OverGroups("ZipStats", {"zip-stats"}, zipStats, kZip, Total::kOfZip),
          OverGroups("LPageStats", {"lpage-stats"}, lpageStats, kLPage, Total::kAdded),
          OverGroups("AsyncRemapStats", {"asyncremap-stats"}, remapStats, kRemap, Total::kAdded),
          // These runs start at group 137, which causes all kinds of reads.
          OverGroups("OneOfGroupStats", {"group-stats", "-g", "137"}, groupStats, kMemoryStats, Total::kNone),
          OverGroups("OneVmOfVmStats", {"vm-stats", "-g", "137"}, vmStats, kMemoryStats, Total::kAdded),
          OverGroups("OneOfUwStats", {"uw-stats", "-g", "137"}, uwStats, kUserWorld, Total::kAdded),
          OverGroups("OneVmOfSwapStats", {"swap-stats", "-g", "137"}, swapStats, kVmm, Total::kAdded),
          OverGroups("OneVmOfGuestStats", {"guest-stats", "-g", "137"}, guestStats, kGuest, Total::kAdded),
          OverGroups("OneVmOfZipStats", {"zip-stats", "-g", "137"}, zipStats, kZip, Total::kOfZip),
          OverGroups("OneVmOfLPageStats", {"lpage-stats", "-g", "137"}, lpageStats, kLPage, Total::kAdded),
          OverGroups("OneOfAsyncRemapStats", {"asyncremap-stats", "-g", "137"}, remapStats, kRemap, Total::kAdded)};
}

}  // namespace faults
