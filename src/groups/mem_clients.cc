#include "src/groups/mem_clients.h"

#include "platkit/nodes.h"
#include "platkit/warning.h"
#include "src/groups/one_argument.h"
#include "src/status/status.h"

namespace kestrel {
namespace {

void WarnUnlessVanished(const char *getter, HVC_ReturnStatus status) {
  if (status != HVC_OK && status != HVC_NOT_FOUND) {
    Warning("%s() failure: %s\n", getter, HVC_ReturnStatusToString(status));
  }
}

}  // namespace

HVC_ReturnStatus Kestrel_MemClientNodalGet(uint32_t clientID, uint32_t node, void *buffer, uint32_t size) {
  return WithOneArgument(
      "Kestrel_MemClientNodalGet", clientID,
      [](HVC_ReturnStatus status) {
        Warning("Kestrel_MemClientNodalGet: NODAL_ParamListAddInt() failure: %s\n", HVC_ReturnStatusToString(status));
      },
      [&](const NODAL_ParamList *arguments) { return NODAL_Get(node, arguments, buffer, size); });
}

HVC_ReturnStatus Kestrel_MemClientGetTotalCommonStats(uint32_t clientID, TotalCommonRecord &stats) {
  const HVC_ReturnStatus status =
      Kestrel_MemClientNodalGet(clientID, NODAL_NODE_sched_memClients_kestrel_totalCommon, &stats, sizeof stats);
  WarnUnlessVanished("Kestrel_MemClientGetTotalCommonStats", status);
  return status;
}

HVC_ReturnStatus Kestrel_GetVmmLeaderID(uint32_t clientID, uint32_t &vmmLeaderID) {
  VmmLeaderIDRecord record = {};
  const HVC_ReturnStatus status =
      Kestrel_MemClientNodalGet(clientID, NODAL_NODE_worldGroups_vmmLeaderID, &record, sizeof record);
  WarnUnlessVanished("Kestrel_GetVmmLeaderID", status);
  if (status == HVC_OK) vmmLeaderID = record.vmmLeaderID;
  return status;
}

}  // namespace kestrel
