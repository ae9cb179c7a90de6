// Functions that read memory clients, the kernel's accounting objects for worlds.
#ifndef KESTREL_GROUPS_MEM_CLIENTS_H
#define KESTREL_GROUPS_MEM_CLIENTS_H

#include <cstdint>

#include "platkit/records.h"
#include "platkit/status.h"
#include "src/nodal/failure.h"
#include "src/nodal/nodes.h"

namespace kestrel {

// Reads a node whose only argument is the client's ID. It warns if it cannot create the argument list, but not if the
// read fails.
[[nodiscard]] HVC_ReturnStatus Kestrel_MemClientNodalGet(uint32_t clientID, uint32_t node, void *buffer, uint32_t size);

// Reads a record of a client for the function `step`. A failure prints a warning that names `step`, unless the client
// has vanished.
template <typename Record>
[[nodiscard]] HVC_ReturnStatus ReadClientRecord(const char *step, uint32_t clientID, NodeRef<Record> node,
                                                Record &record) {
  const HVC_ReturnStatus status = Kestrel_MemClientNodalGet(clientID, node.id, &record, sizeof record);
  WarnOfFailure(step, status, kVanished);
  return status;
}

// These functions do not warn of HVC_NOT_FOUND, which means that the client vanished.
[[nodiscard]] HVC_ReturnStatus Kestrel_MemClientGetTotalCommonStats(uint32_t clientID, TotalCommonRecord &stats);
[[nodiscard]] HVC_ReturnStatus Kestrel_GetVmmLeaderID(uint32_t clientID, uint32_t &vmmLeaderID);
[[nodiscard]] HVC_ReturnStatus KestrelVMGetVMMStats(uint32_t leaderID, VmmMemoryStatsRecord &vmm);

}  // namespace kestrel

#endif  // KESTREL_GROUPS_MEM_CLIENTS_H
