// asyncremap-stats: the pages that asynchronous remapping moves, by memory client of a user world and by type of remap.
#include "platkit/warning.h"
#include "src/groups/group_queries.h"
#include "src/nodal/nodes.h"
#include "src/nodal/param_list.h"
#include "src/reports/group_report.h"
#include "src/reports/reports.h"
#include "src/status/status.h"

namespace kestrel {
namespace {

struct RemapRow {
  GroupNameRecord name;
  uint32_t clientID;
  const char *typeName;  // owned by the list of types
  RemapStatsRecord remap;
};

using enum Conversion;
using enum FigureUnit;
using enum FigureSum;

constinit auto columns = ColumnsOf<RemapRow>({
    {"name", "Group name", 27, kS, [](auto &row) { return Text(row.name.name); }},
    {"grpLeader", "Group leader ID", 10, kD, [](auto &row) { return row.clientID; }},
    {"type", "Type of remap", 28, kS, [](auto &row) { return Text(row.typeName); }, kMandatory},
    {"added", "Total number of pages ever added", 10, kLu, kPages, [](auto &row) { return row.remap.added; }, kAdd},
    {"prepared", "Number of pages ever prepared", 10, kLu, kPages, [](auto &row) { return row.remap.prepared; }, kAdd},
    {"filtered", "Number of pages ever filtered", 10, kLu, kPages, [](auto &row) { return row.remap.filtered; }, kAdd},
    {"staged", "Number of pages ever staged", 10, kLu, kPages, [](auto &row) { return row.remap.staged; }, kAdd},
    {"remapped", "Total number of pages ever remapped", 10, kLu, kPages, [](auto &row) { return row.remap.remapped; },
     kAdd},
    {"canceled", "Total number of pages ever canceled", 10, kLu, kPages, [](auto &row) { return row.remap.canceled; },
     kAdd},
    {"cUnprepared", "Number of pages currently unprepared", 10, kLu, kPages,
     [](auto &row) { return row.remap.cUnprepared; }, kAdd},
    {"cPrepared", "Number of pages currently prepared", 10, kLu, kPages, [](auto &row) { return row.remap.cPrepared; },
     kAdd},
    {"cStaged", "Number of pages currently staged", 10, kLu, kPages, [](auto &row) { return row.remap.cStaged; }, kAdd},
});

constexpr RemapRow kNoLabel = {};

// A step that can fail, as named in its warning. The line numbers are fixed and do not refer to this file.
struct Step {
  const char *function;
  unsigned line;
};

constexpr Step kAddGroup = {"KestrelAsyncRemapReportCallback", 394};
constexpr Step kListClients = {"KestrelAsyncRemapReportCallback", 396};
constexpr Step kGetClient = {"KestrelAsyncRemapReportCallback", 401};
constexpr Step kOneClient = {"KestrelAsyncRemapReportCallback", 403};
constexpr Step kAddClient = {"KestrelAsyncRemapReportCallbackInt", 303};
constexpr Step kListTypes = {"KestrelAsyncRemapReportCallbackInt", 305};
constexpr Step kGetType = {"KestrelAsyncRemapReportCallbackInt", 308};
constexpr Step kOneType = {"KestrelAsyncRemapReportCallbackInt", 310};
constexpr Step kStatsAddClient = {"KestrelAsyncRemapGetStats", 137};
constexpr Step kStatsAddType = {"KestrelAsyncRemapGetStats", 138};
constexpr Step kStatsGet = {"KestrelAsyncRemapGetStats", 140};

// Warns if a step failed, and returns its status. The surrounding steps warn of the same failure again.
HVC_ReturnStatus Checked(const Step &step, HVC_ReturnStatus status) {
  if (status != HVC_OK) {
    Warning("%s:%u failure: %s\n", step.function, step.line, HVC_ReturnStatusToString(status));
  }
  return status;
}

HVC_ReturnStatus KestrelAsyncRemapGetStats(uint32_t clientID, const char *typeName, RemapStatsRecord &remap) {
  const ParamList arguments = MakeArguments(2);
  if (arguments == nullptr) return HVC_FAILURE;
  HVC_ReturnStatus status = Checked(kStatsAddClient, NODAL_ParamListAddInt(arguments.get(), clientID));
  if (status != HVC_OK) return status;
  status = Checked(kStatsAddType, NODAL_ParamListAddString(arguments.get(), typeName));
  if (status != HVC_OK) return status;
  return Checked(kStatsGet, ReadRecord(nodes::kRemapTypes, arguments.get(), remap));
}

// Prints the rows of one memory client of a group.
HVC_ReturnStatus KestrelAsyncRemapReportCallbackInt(const GroupVisit &group, const GroupNameRecord &name,
                                                    uint32_t clientID) {
  const ParamList arguments = MakeArguments(1);
  if (arguments == nullptr) return HVC_FAILURE;
  HVC_ReturnStatus status = Checked(kAddClient, NODAL_ParamListAddInt(arguments.get(), clientID));
  if (status != HVC_OK) return status;
  ParamList types;
  status = Checked(kListTypes, ListInstances(nodes::kRemapTypes, arguments.get(), types));
  if (status != HVC_OK) return status;

  for (uint32_t i = 0; i < NODAL_ParamListUsedCount(types.get()); ++i) {
    RemapRow row = {.name = name, .clientID = clientID, .typeName = nullptr, .remap = {}};
    status = Checked(kGetType, NODAL_ParamListGetString(types.get(), i, &row.typeName));
    if (status != HVC_OK) return status;
    status = Checked(kOneType, KestrelAsyncRemapGetStats(clientID, row.typeName, row.remap));
    if (status != HVC_OK) return status;
    group.PrintRow(row);
  }
  return HVC_OK;
}

HVC_ReturnStatus PrintClients(const GroupVisit &group, const GroupNameRecord &name) {
  const ParamList arguments = MakeArguments(1);
  if (arguments == nullptr) return HVC_FAILURE;
  HVC_ReturnStatus status = Checked(kAddGroup, NODAL_ParamListAddInt(arguments.get(), group.groupID));
  if (status != HVC_OK) return status;
  ParamList clients;
  status = Checked(kListClients, ListInstances(nodes::kMemberClients, arguments.get(), clients));
  if (status != HVC_OK) return status;

  for (uint32_t i = 0; i < NODAL_ParamListUsedCount(clients.get()); ++i) {
    uint32_t clientID = 0;
    status = Checked(kGetClient, NODAL_ParamListGetUInt32(clients.get(), i, &clientID));
    if (status != HVC_OK) return status;
    status = Checked(kOneClient, KestrelAsyncRemapReportCallbackInt(group, name, clientID));
    if (status != HVC_OK) return status;
  }
  return HVC_OK;
}

HVC_ReturnStatus KestrelAsyncRemapReportCallback(const GroupVisit &group) {
  GroupNameRecord name = {};
  const HVC_ReturnStatus status = Kestrel_GroupGetName(group.groupID, name);
  return status == HVC_OK ? PrintClients(group, name) : status;
}

constexpr GroupFrame kFrame = {
    .title = "ASYNC_REMAP STATS",
    .dashes = 43,
    .kinds = HVC_GROUP_USER_WORLD,
    .callback = KestrelAsyncRemapReportCallback,
    .totalLabel = &kNoLabel,
};

}  // namespace

constinit const Report kAsyncRemapStats = {
    .name = "asyncremap-stats",
    .summary = "the pages remapped for each user world, by client and type of remap",
    .options = {"g:s:u:vq"},
    .columns = columns,
    .sums = Sums::kTotalRow,
    .frame = &kFrame,
    .run = RunGroupReport,
};

}  // namespace kestrel
