// asyncremap-stats: the pages that asynchronous remapping moved, for each memory client of each user world and each
// type of remap.
#include "platkit/nodes.h"
#include "platkit/warning.h"
#include "src/groups/group_queries.h"
#include "src/nodal/param_list.h"
#include "src/reports/group_report.h"
#include "src/reports/reports.h"
#include "src/status/status.h"

namespace kestrel {
namespace {

struct AsyncRemapRow {
  GroupNameRecord name;
  uint32_t clientID;
  const char *typeName;  // held by the list of types
  RemapStatsRecord remap;
};

using enum Conversion;
using enum FigureSum;
using Row = AsyncRemapRow;

constinit ColumnDesc columns[] = {
    {"name", "Group name", 27, kS, kPlain, PLAIN(name.name)},
    {"grpLeader", "Group leader ID", 10, kD, kPlain, PLAIN(clientID)},
    {"type", "Type of remap", 28, kS, kMandatory, PLAIN(typeName)},
    {"added", "Total number of pages ever added", 10, kLu, kInTotal, PAGES(remap.added).Sum(kAdd)},
    {"prepared", "Number of pages ever prepared", 10, kLu, kInTotal, PAGES(remap.prepared).Sum(kAdd)},
    {"filtered", "Number of pages ever filtered", 10, kLu, kInTotal, PAGES(remap.filtered).Sum(kAdd)},
    {"staged", "Number of pages ever staged", 10, kLu, kInTotal, PAGES(remap.staged).Sum(kAdd)},
    {"remapped", "Total number of pages ever remapped", 10, kLu, kInTotal, PAGES(remap.remapped).Sum(kAdd)},
    {"canceled", "Total number of pages ever canceled", 10, kLu, kInTotal, PAGES(remap.canceled).Sum(kAdd)},
    {"cUnprepared", "Number of pages currently unprepared", 10, kLu, kInTotal, PAGES(remap.cUnprepared).Sum(kAdd)},
    {"cPrepared", "Number of pages currently prepared", 10, kLu, kInTotal, PAGES(remap.cPrepared).Sum(kAdd)},
    {"cStaged", "Number of pages currently staged", 10, kLu, kInTotal, PAGES(remap.cStaged).Sum(kAdd)},
};

constinit Row totals = {};

// The step of a failure, as its message names it. The line numbers are part of the messages that people search for, and
// do not follow this file.
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

// Reports a step if it failed; hands its status on. A failure deep inside is reported by each step around it, too.
HVC_ReturnStatus Checked(const Step &step, HVC_ReturnStatus status) {
  if (status != HVC_OK) {
    Warning("%s:%u failure: %s\n", step.function, step.line, HVC_ReturnStatusToString(status));
  }
  return status;
}

HVC_ReturnStatus GetStats(uint32_t clientID, const char *typeName, RemapStatsRecord &remap) {
  const ParamList arguments = MakeArguments(2);
  if (arguments == nullptr) return HVC_FAILURE;
  HVC_ReturnStatus status = Checked(kStatsAddClient, NODAL_ParamListAddInt(arguments.get(), clientID));
  if (status != HVC_OK) return status;
  status = Checked(kStatsAddType, NODAL_ParamListAddString(arguments.get(), typeName));
  if (status != HVC_OK) return status;
  return Checked(kStatsGet, ReadRecord(NODAL_NODE_sched_memClients_remapTypes, arguments.get(), remap));
}

// The rows of one client, which `row` has the name and the ID of.
HVC_ReturnStatus PutClient(const GroupVisit &group, Row &row) {
  const ParamList arguments = MakeArguments(1);
  if (arguments == nullptr) return HVC_FAILURE;
  HVC_ReturnStatus status = Checked(kAddClient, NODAL_ParamListAddInt(arguments.get(), row.clientID));
  if (status != HVC_OK) return status;
  ParamList types;
  status = Checked(kListTypes, ListInstances(NODAL_NODE_sched_memClients_remapTypes, arguments.get(), types));
  if (status != HVC_OK) return status;

  for (uint32_t i = 0; i < NODAL_ParamListUsedCount(types.get()); ++i) {
    status = Checked(kGetType, NODAL_ParamListGetString(types.get(), i, &row.typeName));
    if (status != HVC_OK) return status;
    status = Checked(kOneType, GetStats(row.clientID, row.typeName, row.remap));
    if (status != HVC_OK) return status;
    group.Put(row);
  }
  return HVC_OK;
}

HVC_ReturnStatus PutClients(const GroupVisit &group, const GroupNameRecord &name) {
  const ParamList arguments = MakeArguments(1);
  if (arguments == nullptr) return HVC_FAILURE;
  HVC_ReturnStatus status = Checked(kAddGroup, NODAL_ParamListAddInt(arguments.get(), group.groupID));
  if (status != HVC_OK) return status;
  ParamList clients;
  status = Checked(kListClients, ListInstances(NODAL_NODE_sched_groups_members_memClients, arguments.get(), clients));
  if (status != HVC_OK) return status;

  for (uint32_t i = 0; i < NODAL_ParamListUsedCount(clients.get()); ++i) {
    Row row = {};
    row.name = name;
    status = Checked(kGetClient, NODAL_ParamListGetUInt32(clients.get(), i, &row.clientID));
    if (status != HVC_OK) return status;
    status = Checked(kOneClient, PutClient(group, row));
    if (status != HVC_OK) return status;
  }
  return HVC_OK;
}

HVC_ReturnStatus PutRows(const GroupVisit &group) {
  GroupNameRecord name = {};
  const HVC_ReturnStatus status = Kestrel_GroupGetName(group.groupID, name);
  return status == HVC_OK ? PutClients(group, name) : status;
}

constexpr GroupFrame kFrame = {
    .title = "ASYNC_REMAP STATS",
    .dashes = 43,
    .kinds = HVC_GROUP_USER_WORLD,
    .visit = PutRows,
    .totals = &totals,
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
