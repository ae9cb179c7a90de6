#include "src/groups/mem_clients.h"

#include "platkit/warning.h"
#include "src/groups/one_argument.h"
#include "src/status/status.h"

namespace kestrel {
namespace {

// Like ReadClientRecord, but the warning contains the text of the status instead of its number.
template <typename Record>
HVC_ReturnStatus ReadClientRecordByText(const char *getter, uint32_t clientID, NodeRef<Record> node, Record &record) {
  const HVC_ReturnStatus status = Kestrel_MemClientNodalGet(clientID, node.id, &record, sizeof record);
  if (status != HVC_OK && status != HVC_NOT_FOUND) {
    Warning("%s() failure: %s\n", getter, HVC_ReturnStatusToString(status));
  }
  return status;
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
  return ReadClientRecordByText(__func__, clientID, nodes::kTotalCommon, stats);
}

HVC_ReturnStatus Kestrel_GetVmmLeaderID(uint32_t clientID, uint32_t &vmmLeaderID) {
  VmmLeaderIDRecord record = {};
  const HVC_ReturnStatus status = ReadClientRecordByText(__func__, clientID, nodes::kVmmLeaderID, record);
  if (status == HVC_OK) vmmLeaderID = record.vmmLeaderID;
  return status;
}

HVC_ReturnStatus KestrelVMGetVMMStats(uint32_t leaderID, VmmMemoryStatsRecord &vmm) {
  return ReadClientRecord(__func__, leaderID, nodes::kVmmMemoryStats, vmm);
}

}  // namespace kestrel
