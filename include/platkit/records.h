/*
 * The wire records that NODAL_Get fills: packed little-endian structs.
 *
 * The comment above each record gives the path of its node. The comment on a field gives its unit, then its meaning:
 *
 *   KB, bytes, 4 KB pages, 2 MB blocks, percent, microseconds
 *   count      a number of objects or events
 *   ID         identifies an object, such as a group, a memory client or a device
 *   bit mask   the bits are listed at the end of this file, or in the meaning
 *   boolean    0: no; any other value: yes
 *
 * A field without a unit is a plain number or a text. If all bits of a KB field are set, its amount is not available
 * or, for a limit, unlimited. Bytes whose meaning is not known are named unread_<offset>.
 *
 * Fields are not aligned: read and assign them by value, and never take their addresses.
 */
#ifndef PLATKIT_RECORDS_H
#define PLATKIT_RECORDS_H

#include <stdint.h>

#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ != __ORDER_LITTLE_ENDIAN__
#error "the wire records are little-endian, and so must the machine be"
#endif

#pragma pack(push, 1)

/* A scheduler group: /sched/groups/... */

/* /sched/groups/{group:int}/groupName */
typedef struct GroupNameRecord {
  char name[64]; /* the group's name, terminated within the 64 bytes */
} GroupNameRecord;

/* /sched/groups/{group:int}/groupTag */
typedef struct GroupTagRecord {
  char tag[8]; /* the group's tag, not necessarily terminated */
} GroupTagRecord;

/* /sched/groups/{group:int}/parentGroupID */
typedef struct ParentGroupIDRecord {
  int64_t parentGroupID; /* ID: the parent group; -1 for the top of the hierarchy */
} ParentGroupIDRecord;

/* /sched/groups/{group:int}/groupFlags */
typedef struct GroupFlagsRecord {
  uint32_t flags; /* bit mask: kind and properties of the group, as HVC_GROUP_... bits */
} GroupFlagsRecord;

/* /sched/groups/{group:int}/groupLeaderID */
typedef struct GroupLeaderIDRecord {
  uint32_t leaderID; /* ID: memory client of the world that leads a VM or user-world group */
} GroupLeaderIDRecord;

/* /sched/groups/{group:int}/memAllocationInKB */
typedef struct GroupAllocRecord {
  uint64_t min;      /* KB: configured reservation */
  uint64_t max;      /* KB: configured limit; all bits set: unlimited */
  int32_t shares;    /* count: configured shares */
  uint64_t minLimit; /* KB: configured limit of the reservation; all bits set: unlimited */
  uint8_t unread_28[4];
} GroupAllocRecord;

/* /sched/groups/{group:int}/stats/capacity */
typedef struct GroupCapacityRecord {
  uint8_t unread_0[8];
  uint64_t consumedResv; /* KB: reservation consumed by the child groups */
  uint64_t availResv;    /* KB: reservation still available to the group */
} GroupCapacityRecord;

/* /sched/groups/{group:int}/stats/memoryStats */
typedef struct GroupMemoryStatsRecord {
  uint8_t unread_0[4];
  uint64_t memSize; /* KB: guest physical memory, or address space in use by a user world or the kernel */
  uint8_t unread_12[8];
  uint64_t ovhdResv; /* KB: reserved overhead memory */
  uint64_t ovhd;     /* KB: consumed overhead memory */
  uint8_t unread_36[24];
  uint64_t sharedSaved; /* KB: estimated memory saved by page sharing */
  uint8_t unread_68[40];
  uint64_t consumed; /* KB: total memory consumed */
  uint8_t unread_116[24];
  uint64_t touched; /* KB: estimated memory touched */
  uint8_t unread_148[8];
  uint64_t bMin;     /* KB: base reservation */
  uint64_t bMax;     /* KB: base limit */
  uint64_t bShares;  /* count: base shares */
  uint64_t fShares;  /* count: flattened base shares */
  uint64_t iMin;     /* KB: implicit reservation */
  uint64_t eMin;     /* KB: effective reservation */
  uint64_t bActive;  /* KB: base activeness */
  uint64_t allocTgt; /* KB: allocation target */
  uint8_t unread_220[16];
  uint64_t mps;      /* KB: memory per share */
  uint64_t rMinPeak; /* KB: peak of the requested reservation since the last reset */
  uint8_t unread_252[8];
  uint64_t eMinPeak; /* KB: peak of the effective reservation since the last reset */
  uint8_t unread_268[8];
  uint64_t consumedPeak; /* KB: peak of the consumed memory since the last reset */
  uint8_t unread_284[8];
  uint64_t memSizePeak; /* KB: peak of memSize since the last reset */
  uint8_t unread_300[8];
  uint8_t throttlePct;    /* percent: share of the time in which the guest may execute */
  uint64_t rMinChildPeak; /* KB: peak of the reservation requested for subgroups since the last reset */
  uint8_t unread_317[3];
} GroupMemoryStatsRecord;

/*
 * A memory client, which accounts for the memory of a world: /sched/memClients/..., /memory/lpage/vmLPage/... and
 * /worldGroups/...
 */

/* /sched/memClients/{client:int}/kestrel/vmm */
typedef struct VmmMemoryStatsRecord {
  uint8_t unread_0[28];
  uint64_t memSizeLimit; /* KB: upper bound of the guest physical memory */
  uint64_t memSize;      /* KB: guest physical memory */
  uint64_t touched;      /* KB: guest memory in active use */
  uint8_t unread_52[16];
  uint64_t allocTgt; /* KB: host memory allocation target */
  uint8_t unread_76[24];
  uint64_t zero; /* KB: shared guest memory that is filled with zeros */
  uint8_t unread_108[16];
  uint64_t zipped;      /* KB: compressed guest memory */
  uint64_t llswapped;   /* KB: memory swapped to low-latency swap */
  uint64_t vpmemRO;     /* KB: persistent memory cached read-only */
  uint64_t vpmemRW;     /* KB: persistent memory cached read-write */
  uint64_t vpmemUC;     /* KB: persistent memory not yet cached */
  uint64_t llswapUsed;  /* KB: low-latency swap space used, internal fragmentation included */
  uint64_t mapped;      /* KB: guest memory backed by host memory */
  uint64_t shared;      /* KB: mapped memory marked copy-on-write by page sharing */
  uint64_t sharedSaved; /* KB: host memory saved by page sharing */
  uint64_t zipSaved;    /* KB: host memory saved by compression */
  uint8_t unread_204[8];
  uint64_t swapTgt; /* KB: host swap target */
  uint8_t unread_220[8];
  uint64_t swapScope;     /* swap scope */
  uint8_t useReliableMem; /* boolean: uses reliable memory */
  uint8_t unread_237[35];
  uint8_t balloonActive; /* boolean: balloon driver active */
  uint64_t ballooned;    /* KB: size of the balloon */
  uint64_t balloonTgt;   /* KB: target size of the balloon */
  uint8_t unread_289[47];
} VmmMemoryStatsRecord;

/* /sched/memClients/{client:int}/swapInfo */
typedef struct VmSwapInfoRecord {
  uint8_t isSwapping; /* boolean: swapping out now */
  uint64_t swapTgt;   /* KB: host swap target */
  uint64_t swapped;   /* KB: memory swapped by the host */
  uint64_t swapRead;  /* KB: memory read from swap space that still keeps its place there */
  uint64_t swapIn;    /* KB: memory swapped in and released from swap space */
  uint64_t swapOut;   /* KB: memory swapped out */
  uint8_t unread_41[16];
  uint64_t gblSwapRead;    /* KB: read from the global swap file */
  uint64_t gblSwapIn;      /* KB: swapped in from the global swap file */
  uint64_t gblSwapOut;     /* KB: swapped out to the global swap file */
  uint64_t cowSwapper;     /* KB: swapped out while marked copy-on-write by the kernel */
  uint64_t discarded;      /* KB: swapped memory discarded */
  uint32_t vmmSwapOn;      /* count: times the VMM's swapper was turned on */
  uint32_t hvcSwapOn;      /* count: times the kernel's swapper was turned on */
  uint32_t currentSwapper; /* 0 for the VMM's swapper, else the kernel's */
  uint8_t unread_109[28];
  uint64_t totalReg;   /* KB: space in the regular swap file */
  uint64_t freeReg;    /* KB: free space in the regular swap file */
  uint64_t cptTgt;     /* KB: checkpoint memory to read */
  uint64_t cptRead;    /* KB: checkpoint memory read */
  uint64_t cptWritten; /* KB: checkpoint memory written */
  uint64_t totalMig;   /* KB: space in the migration swap file */
  uint64_t freeMig;    /* KB: free space in the migration swap file */
  uint32_t cacheUsage; /* KB: part of the swap-slot cache in use */
  uint8_t unread_197[12];
  uint64_t swapoutReady; /* ready time of the swap-out client, in an unknown unit */
  uint8_t unread_217[3];
} VmSwapInfoRecord;

/* /sched/memClients/{client:int}/kestrel/uw */
typedef struct UwMemoryStatsRecord {
  uint64_t min;         /* KB: configured reservation */
  uint64_t max;         /* KB: configured limit; all bits set: unlimited */
  uint64_t minLimit;    /* KB: configured limit of the reservation; all bits set: unlimited */
  int32_t shares;       /* count: configured shares */
  int32_t memSizeLimit; /* KB: limit of the address space; -1: unlimited */
  uint8_t unread_32[4];
  uint64_t memSize; /* KB: address space in use */
  uint64_t touched; /* KB: memory touched */
  uint8_t unread_52[16];
  uint64_t allocTgt; /* KB: allocation target */
  uint8_t unread_76[48];
  uint64_t zipped; /* KB: compressed memory */
  uint8_t unread_132[40];
  uint64_t mapped; /* KB: address space backed by memory (private, shared and pinned) */
  uint8_t unread_180[8];
  uint64_t sharedSaved; /* KB: memory saved by page sharing */
  uint64_t zipSaved;    /* KB: memory saved by compression */
  uint8_t unread_204[8];
  uint64_t swapTgt; /* KB: swap target */
  uint8_t unread_220[8];
  uint64_t swapScope;     /* swap scope */
  uint8_t useReliableMem; /* boolean: uses reliable memory */
  uint8_t unread_237[27];
  uint64_t totalResv;      /* KB: total reservation */
  uint64_t pinnedResv;     /* KB: reservation for pinning */
  uint64_t memBStore;      /* KB: memory backing store consumed */
  uint64_t swapBStore;     /* KB: swap backing store consumed */
  uint64_t swappable;      /* KB: mapped and unshared memory that can be reclaimed */
  uint64_t shm;            /* KB: shared-memory segments */
  uint64_t cow;            /* KB: copy-on-write memory */
  uint64_t pageable;       /* KB: accounted pageable memory */
  uint64_t pageableUnacct; /* KB: unaccounted pageable memory */
  uint64_t swapped;        /* KB: swapped to secondary storage */
  uint64_t pinned;         /* KB: mapped memory that cannot be swapped */
  uint64_t prealloced;     /* KB: preallocated memory */
} UwMemoryStatsRecord;

/* /sched/memClients/{client:int}/kestrel/guest */
typedef struct GuestStatsRecord {
  uint64_t memTotal;   /* KB: the guest's total memory; all bits set: not available */
  uint32_t lpageTotal; /* count: large pages available to the guest's applications; all bits set: not available */
  uint64_t memNeeded;  /* KB: memory that the current workload needs; all bits set: not available */
} GuestStatsRecord;

/* /sched/memClients/{client:int}/memzipInfo */
typedef struct ZipStatsRecord {
  uint64_t totalCache;    /* KB: compression cache configured */
  uint64_t usedCache;     /* KB: compression cache used */
  uint64_t maxCache;      /* KB: largest compression cache */
  uint32_t nrFreeHalf;    /* count: free half pages */
  uint32_t nrFreeQuarter; /* count: free quarter pages */
  uint64_t zipped;        /* KB: memory compressed */
  uint64_t unZipped;      /* KB: memory decompressed */
  uint8_t unread_48[8];
  uint64_t zipRejected; /* KB: memory rejected by the compression cache */
  uint8_t unread_64[16];
  uint64_t avgZipTime; /* microseconds: average compression time */
  uint8_t unread_88[16];
  uint64_t avgUnzipTime; /* microseconds: average decompression time */
  uint8_t unread_112[24];
} ZipStatsRecord;

/* /memory/lpage/vmLPage/{client:int} */
typedef struct LPageStatsRecord {
  uint32_t backings2M;   /* count: current 2 MB large-page backings */
  uint64_t allocSuccess; /* count: backing attempts that succeeded */
  uint64_t failNoMem;    /* count: attempts that failed for lack of memory */
  uint64_t failPinned;   /* count: attempts that failed because of pinning */
  uint64_t failSwapped;  /* count: attempts abandoned to avoid excessive swap-ins */
  uint8_t unread_36[16];
  uint64_t failPinnedLate; /* count: attempts that failed because of late pinning */
  uint8_t unread_60[24];
  uint32_t lockSuccess;      /* count: guest large-page locking attempts, without those in lockSuccess2 */
  uint64_t broken;           /* count: backings broken */
  uint32_t maxSwapThreshold; /* count: current maximum swap-in threshold */
  uint8_t unread_100[4];
  uint32_t backings1G; /* count: current 1 GB large-page backings */
  uint8_t unread_108[32];
  uint32_t lockSuccess2; /* count: guest large-page locking attempts, without those in lockSuccess */
  uint8_t unread_144[4];
} LPageStatsRecord;

/* /sched/memClients/{client:int}/remapTypes/{remapType:text} */
typedef struct RemapStatsRecord {
  uint64_t added;       /* 4 KB pages: pages ever added */
  uint64_t filtered;    /* 4 KB pages: pages ever filtered */
  uint64_t prepared;    /* 4 KB pages: pages ever prepared */
  uint64_t staged;      /* 4 KB pages: pages ever staged */
  uint64_t canceled;    /* 4 KB pages: pages ever canceled */
  uint64_t remapped;    /* 4 KB pages: pages ever remapped */
  uint64_t cUnprepared; /* 4 KB pages: pages now unprepared */
  uint64_t cPrepared;   /* 4 KB pages: pages now prepared */
  uint64_t cStaged;     /* 4 KB pages: pages now staged */
  uint8_t unread_72[8];
} RemapStatsRecord;

/* /sched/memClients/{client:int}/kestrel/totalCommon */
typedef struct TotalCommonRecord {
  uint8_t unread_0[264];
} TotalCommonRecord;

/* /worldGroups/{client:int}/vmmLeaderID */
typedef struct VmmLeaderIDRecord {
  uint32_t vmmLeaderID; /* ID: memory client of the VM's monitor world */
} VmmLeaderIDRecord;

/* The host's memory: /memory/..., /sched/globalStats/..., /system/... */

/* /memory/pshare/stats */
typedef struct PShareStatsRecord {
  uint64_t cow;  /* 4 KB pages: client memory marked copy-on-write */
  uint64_t cow1; /* 4 KB pages: copy-on-write client memory with a single reference */
  uint64_t zero; /* 4 KB pages: zeroed client memory */
  uint8_t unread_24[8];
  uint64_t used;              /* 4 KB pages: machine memory that backs copy-on-write client memory */
  uint64_t reclaimed;         /* 4 KB pages: machine memory reclaimed by sharing */
  uint64_t totAdd;            /* 4 KB pages: client memory ever added to the sharing table */
  uint64_t totRemove;         /* 4 KB pages: client memory ever removed from the sharing table */
  uint64_t hintsActive;       /* 4 KB pages: hints now active */
  uint64_t hintsAdded;        /* 4 KB pages: hints ever added */
  uint64_t hintsRemoved;      /* 4 KB pages: hints ever removed */
  uint64_t lpageHintsAdded;   /* 4 KB pages: large-page hints ever added */
  uint64_t lpageHintsRemoved; /* 4 KB pages: large-page hints ever removed */
  uint8_t unread_104[64];
  uint64_t peakChainLength; /* count: longest hash chain seen */
  uint64_t peakChainIndex;  /* hash bucket with the longest chain */
  uint64_t peakRefCount;    /* count: highest reference count of one shared page */
  uint8_t unread_192[16];
} PShareStatsRecord;

/* /memory/memNodes/{memNode:int} */
typedef struct MemNodeRecord {
  uint8_t numaNode; /* NUMA node of the memory node */
  uint8_t unread_1[27];
} MemNodeRecord;

/* An entry of BuddyComprehensiveRecord. */
typedef struct BuddySizeRecord {
  uint32_t free; /* count: free buffers of this size */
  uint32_t used; /* count: used buffers of this size */
  uint8_t unread_8[4];
} BuddySizeRecord;

/* /system/buddy/{buddy:text}/comprehensive */
typedef struct BuddyComprehensiveRecord {
  uint8_t unread_0[8];
  BuddySizeRecord sizes[19]; /* one entry per buffer size: entry k is for 4 KB times 2 to the power of k */
} BuddyComprehensiveRecord;

/* /memory/comprehensive */
typedef struct ComprehensiveRecord {
  uint64_t total;             /* KB: physical memory of the host */
  uint64_t managedByMemMap;   /* KB: managed by MemMap */
  uint64_t reliableMem;       /* KB: reliable memory */
  uint64_t discarded;         /* KB: discarded by the kernel */
  uint64_t buddyOvhd;         /* KB: overhead of the buddy allocators */
  uint64_t kernelCode;        /* KB: the kernel's code region */
  uint64_t dataAndHeap;       /* KB: the kernel's data and heap */
  uint64_t hvcClientConsumed; /* KB: consumed by the kernel's clients */
  uint64_t otherConsumed;     /* KB: consumed by other clients */
  uint64_t rsvdLow;           /* KB: reserved low memory */
  uint64_t free;              /* KB: free memory */
} ComprehensiveRecord;

/* /sched/globalStats/memory/kestrel */
typedef struct GlobalMemoryRecord {
  uint8_t unread_0[12];
  uint64_t managedByMemSched; /* KB: managed by MemSched; all bits set: not available */
  uint8_t unread_20[16];
  uint64_t minFree; /* KB: minimum of free memory; all bits set: not available */
  uint8_t unread_44[24];
  uint32_t memState; /* 0 high, 1 clear, 2 soft, 3 hard, 4 low */
  uint8_t unread_72[280];
} GlobalMemoryRecord;

/* /sched/globalStats/memory/stateTransitions/{state:text} */
typedef struct StateTransitionsRecord {
  uint8_t unread_0[4];
  uint32_t toHigherCount; /* count: times the host moved from this state to the next higher one */
  uint8_t unread_8[12];
  uint32_t toLowerCount; /* count: times the host moved from this state to the next lower one */
  uint8_t unread_24[8];
} StateTransitionsRecord;

/* /memory/memInfo */
typedef struct MemInfoRecord {
  uint8_t unread_0[12];
  uint32_t numNodes; /* count: NUMA memory nodes */
  uint8_t unread_16[8];
} MemInfoRecord;

/* /sched/globalStats/numVMs */
typedef struct NumVMsRecord {
  uint32_t numVMs; /* count: virtual machines */
} NumVMsRecord;

/*
 * /memory/lpage/nodeList/{numaNode:int}/vmPools/{pool:text}
 * /memory/lpage/nodeList/{numaNode:int}/psharePool
 */
typedef struct LPoolStatsRecord {
  uint32_t nrLPages;         /* count: large pages in the pool */
  uint32_t nrFreeSPages;     /* count: small pages free */
  uint64_t nrSPageAllocs;    /* count: small pages ever allocated */
  uint64_t nrSPageFrees;     /* count: small pages ever freed */
  uint64_t nrReapAttempts;   /* count: reap attempts */
  uint64_t nrSPagesReaped;   /* count: small pages reaped */
  uint64_t nrDefragAttempts; /* count: large-page defragmentation attempts */
  uint8_t unread_48[8];
  uint64_t nrDefragCancelled;  /* count: defragmentation attempts cancelled */
  uint64_t nrDefragReaped;     /* count: defragmentation attempts reaped */
  uint64_t nrLPagesDefragged;  /* count: large pages defragmented */
  uint64_t peakDefragAttempts; /* count: highest number of defragmentation attempts for one large page */
  uint64_t nrCachehit;         /* count: hits in the large-page victim cache */
} LPoolStatsRecord;

/* /system/heaps/{heap:text}/stats */
typedef struct HeapStatsRecord {
  char name[36];   /* the heap's name, terminated */
  uint8_t dynGrow; /* boolean: can grow dynamically */
  uint8_t unread_37[4];
  uint32_t lowerLimit; /* lower limit */
  uint32_t upperLimit; /* upper limit */
  uint8_t reserved;    /* reserved */
  uint8_t unread_50[8];
  uint32_t numRanges;    /* count: address ranges */
  uint32_t dlMallocOvhd; /* bytes: allocator overhead */
  uint32_t size;         /* bytes: current size */
  uint32_t initial;      /* bytes: initial size */
  uint8_t unread_74[4];
  uint32_t avail; /* bytes: now available */
  uint8_t unread_82[4];
  uint32_t pctFreeOfCur; /* percent: free part of the current size */
  uint8_t unread_90[4];
  uint32_t max;             /* bytes: maximum size */
  uint32_t maxAvail;        /* bytes: maximum available */
  uint32_t pctFreeOfMax;    /* percent: free part of the maximum size */
  uint32_t lowPctFreeOfMax; /* percent: lowest free part of the maximum size ever seen */
  uint8_t unread_110[4];
  uint32_t numSuccAllocs; /* count: allocations that succeeded */
  uint32_t numFailAllocs; /* count: allocations that failed */
  uint8_t unread_122[4];
  uint32_t avgAllocSize;     /* bytes: average allocation */
  uint32_t numReqsPerGrowth; /* count: requests per growth operation */
  uint32_t numGrowthOps;     /* count: growth operations */
  uint32_t numShrinkOps;     /* count: shrink operations */
  uint8_t unread_142[6];
} HeapStatsRecord;

/* Persistent memory: /memory/pmem/volumes/... */

/* /memory/pmem/volumes/{volume:text}/info */
typedef struct PMemVolumeRecord {
  uint8_t unread_0[40];
} PMemVolumeRecord;

/* /memory/pmem/volumes/{volume:text}/regionStore/info */
typedef struct RegionStoreRecord {
  uint64_t allocatedBlocks; /* 2 MB blocks: allocated */
  uint64_t reservedBlocks;  /* 2 MB blocks: reserved */
  uint64_t availableBlocks; /* 2 MB blocks: available to reserve */
  uint32_t totalRegions;    /* count: regions in the region store */
  uint32_t freeRegions;     /* count: free regions in the region store */
  uint64_t totalBlocks;     /* 2 MB blocks: total */
  uint8_t unread_40[8];
} RegionStoreRecord;

/* /memory/pmem/volumes/{volume:text}/regionStore/isClean */
typedef struct RegionStoreCleanRecord {
  uint8_t isClean; /* boolean: the region store is clean */
} RegionStoreCleanRecord;

/* /memory/pmem/volumes/{volume:text}/regionStore/regions/{region:text}/info */
typedef struct RegionRecord {
  uint8_t unread_0[37];
  uint64_t size;             /* bytes: size */
  uint64_t reservedBlocks;   /* 2 MB blocks: reserved */
  uint32_t flags;            /* bit mask: state of the region, as HVC_REGION_... bits */
  uint32_t openCount;        /* count: open handles */
  uint64_t allocatedBlocks;  /* 2 MB blocks: allocated */
  uint16_t managementTag;    /* management tag */
  uint64_t numaAffinityMask; /* bit mask: one bit per NUMA node */
  uint8_t unread_79[1];
} RegionRecord;

/* /memory/pmem/volumes/{volume:text}/extents/{extent:int} */
typedef struct ExtentRecord {
  uint64_t startBlock; /* starting block */
  uint64_t endBlock;   /* ending block */
  uint64_t startMPN;   /* starting machine page number */
  uint64_t endMPN;     /* ending machine page number */
  uint64_t numaNode;   /* NUMA node of the extent */
} ExtentRecord;

/* /memory/pmem/volumes/{volume:text}/regionStore/regions/{region:text}/numaAllocInfo/{numaNode:int} */
typedef struct RegionNumaRecord {
  uint32_t numaNode;        /* NUMA node */
  uint64_t allocatedBlocks; /* 2 MB blocks: allocated on that node */
} RegionNumaRecord;

/* Hardware: /hardware/... */

/* /hardware/cpu/cpuList/{cpu:int} */
typedef struct CpuRecord {
  uint8_t unread_0[1];
  uint8_t model; /* processor model number */
  uint8_t unread_2[198];
} CpuRecord;

/* /hardware/pci/seg/{segment:int}/bus/{bus:int}/slot/{slot:int}/func/{function:int}/pciConfigHeader */
typedef struct PciConfigHeaderRecord {
  uint16_t vendorID; /* ID: vendor */
  uint16_t deviceID; /* ID: device */
  uint8_t unread_4[160];
} PciConfigHeaderRecord;

/*
 * /hardware/pci/seg/{segment:int}/bus/{bus:int}/slot/{slot:int}/func/{function:int}/pciConfigReg/size/{size:int}
 *   /addr/{address:int}
 */
typedef struct PciConfigRegRecord {
  uint32_t value; /* the register's value */
} PciConfigRegRecord;

#pragma pack(pop)

/* Bits of GroupFlagsRecord. */
enum HVC_GroupFlag {
  HVC_GROUP_PREDEFINED = 0x1,
  HVC_GROUP_LEAF = 0x2,
  HVC_GROUP_VM = 0x4,
  HVC_GROUP_USER_WORLD = 0x8,
  HVC_GROUP_SYSTEM_WORLD = 0x10,
  HVC_GROUP_TEST_WORLD = 0x20,
  HVC_GROUP_PROTECTED = 0x40,
  HVC_GROUP_SELF_DESTRUCT = 0x80,
  HVC_GROUP_NON_PERSISTENT = 0x100,
  HVC_GROUP_KERNEL = 0x200,
  HVC_GROUP_USER_CREATED = 0x400,
  HVC_GROUP_CONTAINER = 0x800,
  HVC_GROUP_SUB_CONTAINER = 0x1000,
  HVC_GROUP_VMM_SUB_CONTAINER = 0x2000,
  HVC_GROUP_UW_SUB_CONTAINER = 0x4000
};

/* Bits of RegionRecord.flags. */
enum HVC_RegionFlag {
  HVC_REGION_ALLOCATED = 0x1,
  HVC_REGION_DANGLING = 0x2,
  HVC_REGION_LOCKED = 0x4,
  HVC_REGION_READ_ONLY = 0x8,
  HVC_REGION_BLOCK_DEVICE = 0x10,
  HVC_REGION_PERSISTENT_RESERVATION = 0x20,
  HVC_REGION_SYSTEM = 0x40,
  HVC_REGION_ZOMBIE = 0x80
};

/* A KB amount that is not available, or a limit that is not set. */
#define HVC_KB_NONE UINT64_MAX

#endif /* PLATKIT_RECORDS_H */
