// Memory clients: the kernel's accounting objects for worlds, named by the ID of a group's leader.
#ifndef KESTREL_GROUPS_MEM_CLIENTS_H
#define KESTREL_GROUPS_MEM_CLIENTS_H

#include <cstdint>

#include "platkit/records.h"
#include "platkit/status.h"
#include "src/nodal/failure.h"

namespace kestrel {

// Reads a node with the client's ID as its only argument. Reports what keeps it from reading, but leaves the status of
// the read itself to its caller.
[[nodiscard]] HVC_ReturnStatus Kestrel_MemClientNodalGet(uint32_t clientID, uint32_t node, void *buffer, uint32_t size);

// Reads a record of a client for the step of that name, which reports all but a client that vanished.
template <typename Record>
[[nodiscard]] HVC_ReturnStatus ReadClientRecord(const char *step, uint32_t clientID, uint32_t node, Record &record) {
  const HVC_ReturnStatus status = Kestrel_MemClientNodalGet(clientID, node, &record, sizeof record);
  WarnOfFailure(step, status, kVanished);
  return status;
}

// These are silent about HVC_NOT_FOUND, for a client that vanished.
[[nodiscard]] HVC_ReturnStatus Kestrel_MemClientGetTotalCommonStats(uint32_t clientID, TotalCommonRecord &stats);
[[nodiscard]] HVC_ReturnStatus Kestrel_GetVmmLeaderID(uint32_t clientID, uint32_t &vmmLeaderID);

}  // namespace kestrel

#endif  // KESTREL_GROUPS_MEM_CLIENTS_H
