/* The public headers in a program written in C. */
#include "tests/platkit/c_interface.h"

#include <stddef.h>

#include "platkit/nodal.h"
#include "platkit/nodes.h"
#include "platkit/records.h"
#include "platkit/status.h"
#include "platkit/str.h"
#include "platkit/warning.h"

/* The offsets are asserted in C++; the C compiler must lay the records out in the same way. */
_Static_assert(sizeof(GroupMemoryStatsRecord) == 320, "GroupMemoryStatsRecord");
_Static_assert(offsetof(GroupMemoryStatsRecord, rMinChildPeak) == 309, "rMinChildPeak");
_Static_assert(offsetof(VmmMemoryStatsRecord, ballooned) == 273, "ballooned");
_Static_assert(sizeof(BuddyComprehensiveRecord) == 236, "BuddyComprehensiveRecord");
_Static_assert(HVC_NOT_FOUND == 0x0bad0003, "HVC_NOT_FOUND");

uint32_t CountMembersInC(int64_t group) {
  uint32_t count = UINT32_MAX;
  NODAL_ParamList *members = NULL;
  NODAL_ParamList *args = NODAL_ParamListCreate(NODAL_LIST_INSTANCES, 1);
  if (args == NULL) return count;
  if (NODAL_ParamListAddInt(args, group) == HVC_OK &&
      NODAL_GetInstanceListAlloc(NODAL_NODE_sched_groups_members_groups, args, &members) == HVC_OK) {
    count = NODAL_ParamListUsedCount(members);
    NODAL_ParamListDestroy(members);
  }
  NODAL_ParamListDestroy(args);
  return count;
}
