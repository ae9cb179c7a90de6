/* The public headers in a program written in C. */
#include "tests/platkit/c_interface.h"

#include <stddef.h>

#include "platkit/nodal.h"
#include "platkit/nodes.h"
#include "platkit/records.h"
#include "platkit/status.h"
#include "platkit/str.h"
#include "platkit/warning.h"

/* The C compiler must lay out the records as the library's C++ compiler does. */
_Static_assert(sizeof(GroupNameRecord) == 64, "GroupNameRecord");
_Static_assert(sizeof(GroupTagRecord) == 8, "GroupTagRecord");
_Static_assert(sizeof(ParentGroupIDRecord) == 8, "ParentGroupIDRecord");
_Static_assert(sizeof(GroupFlagsRecord) == 4, "GroupFlagsRecord");
_Static_assert(sizeof(GroupLeaderIDRecord) == 4, "GroupLeaderIDRecord");
_Static_assert(sizeof(GroupAllocRecord) == 32, "GroupAllocRecord");
_Static_assert(sizeof(GroupCapacityRecord) == 24, "GroupCapacityRecord");
_Static_assert(sizeof(GroupMemoryStatsRecord) == 320, "GroupMemoryStatsRecord");
_Static_assert(sizeof(VmmMemoryStatsRecord) == 336, "VmmMemoryStatsRecord");
_Static_assert(sizeof(VmSwapInfoRecord) == 220, "VmSwapInfoRecord");
_Static_assert(sizeof(UwMemoryStatsRecord) == 360, "UwMemoryStatsRecord");
_Static_assert(sizeof(GuestStatsRecord) == 20, "GuestStatsRecord");
_Static_assert(sizeof(ZipStatsRecord) == 136, "ZipStatsRecord");
_Static_assert(sizeof(LPageStatsRecord) == 148, "LPageStatsRecord");
_Static_assert(sizeof(RemapStatsRecord) == 80, "RemapStatsRecord");
_Static_assert(sizeof(TotalCommonRecord) == 264, "TotalCommonRecord");
_Static_assert(sizeof(VmmLeaderIDRecord) == 4, "VmmLeaderIDRecord");
_Static_assert(sizeof(PShareStatsRecord) == 208, "PShareStatsRecord");
_Static_assert(sizeof(MemNodeRecord) == 28, "MemNodeRecord");
_Static_assert(sizeof(BuddySizeRecord) == 12, "BuddySizeRecord");
_Static_assert(sizeof(BuddyComprehensiveRecord) == 236, "BuddyComprehensiveRecord");
_Static_assert(sizeof(ComprehensiveRecord) == 88, "ComprehensiveRecord");
_Static_assert(sizeof(GlobalMemoryRecord) == 352, "GlobalMemoryRecord");
_Static_assert(sizeof(StateTransitionsRecord) == 32, "StateTransitionsRecord");
_Static_assert(sizeof(MemInfoRecord) == 24, "MemInfoRecord");
_Static_assert(sizeof(NumVMsRecord) == 4, "NumVMsRecord");
_Static_assert(sizeof(LPoolStatsRecord) == 96, "LPoolStatsRecord");
_Static_assert(sizeof(HeapStatsRecord) == 148, "HeapStatsRecord");
_Static_assert(sizeof(PMemVolumeRecord) == 40, "PMemVolumeRecord");
_Static_assert(sizeof(RegionStoreRecord) == 48, "RegionStoreRecord");
_Static_assert(sizeof(RegionStoreCleanRecord) == 1, "RegionStoreCleanRecord");
_Static_assert(sizeof(RegionRecord) == 80, "RegionRecord");
_Static_assert(sizeof(ExtentRecord) == 40, "ExtentRecord");
_Static_assert(sizeof(RegionNumaRecord) == 12, "RegionNumaRecord");
_Static_assert(sizeof(CpuRecord) == 200, "CpuRecord");
_Static_assert(sizeof(PciConfigHeaderRecord) == 164, "PciConfigHeaderRecord");
_Static_assert(sizeof(PciConfigRegRecord) == 4, "PciConfigRegRecord");
_Static_assert(offsetof(GroupMemoryStatsRecord, rMinChildPeak) == 309, "rMinChildPeak");
_Static_assert(offsetof(VmmMemoryStatsRecord, ballooned) == 273, "ballooned");
_Static_assert(offsetof(HeapStatsRecord, avgAllocSize) == 126, "avgAllocSize");
_Static_assert(HVC_OK == 0, "HVC_OK");
_Static_assert(HVC_NOT_FOUND == 0x0bad0003, "HVC_NOT_FOUND");
_Static_assert(HVC_CONSOLE_ERROR == 0x0bad0162, "HVC_CONSOLE_ERROR");

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
