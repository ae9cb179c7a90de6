// Units and meanings of the fields in the records of the host's memory.
#ifndef PLATKIT_CATALOGUE_MEMORY_RECORDS_H
#define PLATKIT_CATALOGUE_MEMORY_RECORDS_H

#include "platkit/catalogue/record_table.h"

namespace platkit {

template <>
struct RecordTable<PShareStatsRecord> {
  PLATKIT_TABLE_OF(PShareStatsRecord);
  static constexpr Field kFields[] = {
      PLATKIT_FIELD(0, uint64_t, cow, PAGES, "client memory marked copy-on-write"),
      PLATKIT_FIELD(8, uint64_t, cow1, PAGES, "copy-on-write client memory with a single reference"),
      PLATKIT_FIELD(16, uint64_t, zero, PAGES, "zeroed client memory"),
      PLATKIT_GAP(24, 8),
      PLATKIT_FIELD(32, uint64_t, used, PAGES, "machine memory that backs copy-on-write client memory"),
      PLATKIT_FIELD(40, uint64_t, reclaimed, PAGES, "machine memory reclaimed by sharing"),
      PLATKIT_FIELD(48, uint64_t, totAdd, PAGES, "client memory ever added to the sharing table"),
      PLATKIT_FIELD(56, uint64_t, totRemove, PAGES, "client memory ever removed from the sharing table"),
      PLATKIT_FIELD(64, uint64_t, hintsActive, PAGES, "hints now active"),
      PLATKIT_FIELD(72, uint64_t, hintsAdded, PAGES, "hints ever added"),
      PLATKIT_FIELD(80, uint64_t, hintsRemoved, PAGES, "hints ever removed"),
      PLATKIT_FIELD(88, uint64_t, lpageHintsAdded, PAGES, "large-page hints ever added"),
      PLATKIT_FIELD(96, uint64_t, lpageHintsRemoved, PAGES, "large-page hints ever removed"),
      PLATKIT_GAP(104, 64),
      PLATKIT_FIELD(168, uint64_t, peakChainLength, COUNT, "longest hash chain seen"),
      PLATKIT_FIELD(176, uint64_t, peakChainIndex, NUMBER, "hash bucket of the longest chain"),
      PLATKIT_FIELD(184, uint64_t, peakRefCount, COUNT, "highest reference count of one shared page"),
      PLATKIT_GAP(192, 16),
  };
};

template <>
struct RecordTable<MemNodeRecord> {
  PLATKIT_TABLE_OF(MemNodeRecord);
  static constexpr Field kFields[] = {
      PLATKIT_FIELD(0, uint8_t, numaNode, NUMBER, "NUMA node of the memory node"),
      PLATKIT_GAP(1, 27),
  };
};

template <>
struct RecordTable<BuddySizeRecord> {
  PLATKIT_TABLE_OF(BuddySizeRecord);
  static constexpr Field kFields[] = {
      PLATKIT_FIELD(0, uint32_t, free, COUNT, "free buffers of this size"),
      PLATKIT_FIELD(4, uint32_t, used, COUNT, "used buffers of this size"),
      PLATKIT_GAP(8, 4),
  };
};

template <>
struct RecordTable<BuddyComprehensiveRecord> {
  PLATKIT_TABLE_OF(BuddyComprehensiveRecord);
  static constexpr Field kFields[] = {
      PLATKIT_GAP(0, 8),
      PLATKIT_ENTRIES(8, BuddySizeRecord, sizes, 19, "entry k counts buffers of 4 KB times 2 to the power of k"),
  };
};

template <>
struct RecordTable<ComprehensiveRecord> {
  PLATKIT_TABLE_OF(ComprehensiveRecord);
  static constexpr Field kFields[] = {
      PLATKIT_FIELD(0, uint64_t, total, KB, "physical memory of the host"),
      PLATKIT_FIELD(8, uint64_t, managedByMemMap, KB, "managed by MemMap"),
      PLATKIT_FIELD(16, uint64_t, reliableMem, KB, "reliable memory"),
      PLATKIT_FIELD(24, uint64_t, discarded, KB, "discarded by the kernel"),
      PLATKIT_FIELD(32, uint64_t, buddyOvhd, KB, "overhead of the buddy allocators"),
      PLATKIT_FIELD(40, uint64_t, kernelCode, KB, "the kernel's code region"),
      PLATKIT_FIELD(48, uint64_t, dataAndHeap, KB, "the kernel's data and heap"),
      PLATKIT_FIELD(56, uint64_t, hvcClientConsumed, KB, "consumed by the kernel's clients"),
      PLATKIT_FIELD(64, uint64_t, otherConsumed, KB, "consumed by other clients"),
      PLATKIT_FIELD(72, uint64_t, rsvdLow, KB, "reserved low memory"),
      PLATKIT_FIELD(80, uint64_t, free, KB, "free memory"),
  };
};

template <>
struct RecordTable<GlobalMemoryRecord> {
  PLATKIT_TABLE_OF(GlobalMemoryRecord);
  static constexpr Field kFields[] = {
      PLATKIT_GAP(0, 12),
      PLATKIT_FIELD(12, uint64_t, managedByMemSched, KB, "managed by MemSched; all bits set: not available"),
      PLATKIT_GAP(20, 16),
      PLATKIT_FIELD(36, uint64_t, minFree, KB, "minimum of free memory; all bits set: not available"),
      PLATKIT_GAP(44, 24),
      PLATKIT_FIELD(68, uint32_t, memState, NUMBER, "0 high, 1 clear, 2 soft, 3 hard, 4 low"),
      PLATKIT_GAP(72, 280),
  };
};

template <>
struct RecordTable<StateTransitionsRecord> {
  PLATKIT_TABLE_OF(StateTransitionsRecord);
  static constexpr Field kFields[] = {
      PLATKIT_GAP(0, 4),
      PLATKIT_FIELD(4, uint32_t, toHigherCount, COUNT, "times the host moved from this state to the next higher one"),
      PLATKIT_GAP(8, 12),
      PLATKIT_FIELD(20, uint32_t, toLowerCount, COUNT, "times the host moved from this state to the next lower one"),
      PLATKIT_GAP(24, 8),
  };
};

template <>
struct RecordTable<MemInfoRecord> {
  PLATKIT_TABLE_OF(MemInfoRecord);
  static constexpr Field kFields[] = {
      PLATKIT_GAP(0, 12),
      PLATKIT_FIELD(12, uint32_t, numNodes, COUNT, "NUMA memory nodes"),
      PLATKIT_GAP(16, 8),
  };
};

template <>
struct RecordTable<NumVMsRecord> {
  PLATKIT_TABLE_OF(NumVMsRecord);
  static constexpr Field kFields[] = {
      PLATKIT_FIELD(0, uint32_t, numVMs, COUNT, "virtual machines"),
  };
};

template <>
struct RecordTable<LPoolStatsRecord> {
  PLATKIT_TABLE_OF(LPoolStatsRecord);
  static constexpr Field kFields[] = {
      PLATKIT_FIELD(0, uint32_t, nrLPages, COUNT, "large pages in the pool"),
      PLATKIT_FIELD(4, uint32_t, nrFreeSPages, COUNT, "small pages free"),
      PLATKIT_FIELD(8, uint64_t, nrSPageAllocs, COUNT, "small pages ever allocated"),
      PLATKIT_FIELD(16, uint64_t, nrSPageFrees, COUNT, "small pages ever freed"),
      PLATKIT_FIELD(24, uint64_t, nrReapAttempts, COUNT, "reap attempts"),
      PLATKIT_FIELD(32, uint64_t, nrSPagesReaped, COUNT, "small pages reaped"),
      PLATKIT_FIELD(40, uint64_t, nrDefragAttempts, COUNT, "large-page defragmentation attempts"),
      PLATKIT_GAP(48, 8),
      PLATKIT_FIELD(56, uint64_t, nrDefragCancelled, COUNT, "defragmentation attempts cancelled"),
      PLATKIT_FIELD(64, uint64_t, nrDefragReaped, COUNT, "defragmentation attempts reaped"),
      PLATKIT_FIELD(72, uint64_t, nrLPagesDefragged, COUNT, "large pages defragmented"),
      PLATKIT_FIELD(80, uint64_t, peakDefragAttempts, COUNT, "maximum defragmentation attempts for one large page"),
      PLATKIT_FIELD(88, uint64_t, nrCachehit, COUNT, "hits in the large-page victim cache"),
  };
};

template <>
struct RecordTable<HeapStatsRecord> {
  PLATKIT_TABLE_OF(HeapStatsRecord);
  static constexpr Field kFields[] = {
      PLATKIT_TEXT(0, 36, name, "the heap's name, terminated"),
      PLATKIT_FIELD(36, uint8_t, dynGrow, BOOL, "can grow dynamically"),
      PLATKIT_GAP(37, 4),
      PLATKIT_FIELD(41, uint32_t, lowerLimit, NUMBER, "lower limit"),
      PLATKIT_FIELD(45, uint32_t, upperLimit, NUMBER, "upper limit"),
      PLATKIT_FIELD(49, uint8_t, reserved, NUMBER, "reserved"),
      PLATKIT_GAP(50, 8),
      PLATKIT_FIELD(58, uint32_t, numRanges, COUNT, "address ranges"),
      PLATKIT_FIELD(62, uint32_t, dlMallocOvhd, BYTES, "allocator overhead"),
      PLATKIT_FIELD(66, uint32_t, size, BYTES, "current size"),
      PLATKIT_FIELD(70, uint32_t, initial, BYTES, "initial size"),
      PLATKIT_GAP(74, 4),
      PLATKIT_FIELD(78, uint32_t, avail, BYTES, "now available"),
      PLATKIT_GAP(82, 4),
      PLATKIT_FIELD(86, uint32_t, pctFreeOfCur, PERCENT, "free part of the current size"),
      PLATKIT_GAP(90, 4),
      PLATKIT_FIELD(94, uint32_t, max, BYTES, "maximum size"),
      PLATKIT_FIELD(98, uint32_t, maxAvail, BYTES, "maximum available"),
      PLATKIT_FIELD(102, uint32_t, pctFreeOfMax, PERCENT, "free part of the maximum size"),
      PLATKIT_FIELD(106, uint32_t, lowPctFreeOfMax, PERCENT, "lowest free part of the maximum size ever seen"),
      PLATKIT_GAP(110, 4),
      PLATKIT_FIELD(114, uint32_t, numSuccAllocs, COUNT, "allocations that succeeded"),
      PLATKIT_FIELD(118, uint32_t, numFailAllocs, COUNT, "allocations that failed"),
      PLATKIT_GAP(122, 4),
      PLATKIT_FIELD(126, uint32_t, avgAllocSize, BYTES, "average allocation"),
      PLATKIT_FIELD(130, uint32_t, numReqsPerGrowth, COUNT, "requests per growth operation"),
      PLATKIT_FIELD(134, uint32_t, numGrowthOps, COUNT, "growth operations"),
      PLATKIT_FIELD(138, uint32_t, numShrinkOps, COUNT, "shrink operations"),
      PLATKIT_GAP(142, 6),
  };
};

}  // namespace platkit

#endif  // PLATKIT_CATALOGUE_MEMORY_RECORDS_H
