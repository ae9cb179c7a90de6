// Units and meanings of the fields in the records of memory clients.
#ifndef PLATKIT_CATALOGUE_CLIENT_RECORDS_H
#define PLATKIT_CATALOGUE_CLIENT_RECORDS_H

#include "platkit/catalogue/record_table.h"

namespace platkit {

template <>
struct RecordTable<VmmMemoryStatsRecord> {
  PLATKIT_TABLE_OF(VmmMemoryStatsRecord);
  static constexpr Field kFields[] = {
      PLATKIT_GAP(0, 28),
      PLATKIT_FIELD(28, uint64_t, memSizeLimit, KB, "upper bound of the guest physical memory"),
      PLATKIT_FIELD(36, uint64_t, memSize, KB, "guest physical memory"),
      PLATKIT_FIELD(44, uint64_t, touched, KB, "guest memory in active use"),
      PLATKIT_GAP(52, 16),
      PLATKIT_FIELD(68, uint64_t, allocTgt, KB, "host memory allocation target"),
      PLATKIT_GAP(76, 24),
      PLATKIT_FIELD(100, uint64_t, zero, KB, "shared guest memory that is filled with zeros"),
      PLATKIT_GAP(108, 16),
      PLATKIT_FIELD(124, uint64_t, zipped, KB, "compressed guest memory"),
      PLATKIT_FIELD(132, uint64_t, llswapped, KB, "memory swapped to low-latency swap"),
      PLATKIT_FIELD(140, uint64_t, vpmemRO, KB, "persistent memory cached read-only"),
      PLATKIT_FIELD(148, uint64_t, vpmemRW, KB, "persistent memory cached read-write"),
      PLATKIT_FIELD(156, uint64_t, vpmemUC, KB, "persistent memory not yet cached"),
      PLATKIT_FIELD(164, uint64_t, llswapUsed, KB, "low-latency swap space used, internal fragmentation included"),
      PLATKIT_FIELD(172, uint64_t, mapped, KB, "guest memory backed by host memory"),
      PLATKIT_FIELD(180, uint64_t, shared, KB, "mapped memory marked copy-on-write by page sharing"),
      PLATKIT_FIELD(188, uint64_t, sharedSaved, KB, "host memory saved by page sharing"),
      PLATKIT_FIELD(196, uint64_t, zipSaved, KB, "host memory saved by compression"),
      PLATKIT_GAP(204, 8),
      PLATKIT_FIELD(212, uint64_t, swapTgt, KB, "host swap target"),
      PLATKIT_GAP(220, 8),
      PLATKIT_FIELD(228, uint64_t, swapScope, NUMBER, "swap scope"),
      PLATKIT_FIELD(236, uint8_t, useReliableMem, BOOL, "uses reliable memory"),
      PLATKIT_GAP(237, 35),
      PLATKIT_FIELD(272, uint8_t, balloonActive, BOOL, "balloon driver active"),
      PLATKIT_FIELD(273, uint64_t, ballooned, KB, "size of the balloon"),
      PLATKIT_FIELD(281, uint64_t, balloonTgt, KB, "target size of the balloon"),
      PLATKIT_GAP(289, 47),
  };
};

template <>
struct RecordTable<VmSwapInfoRecord> {
  PLATKIT_TABLE_OF(VmSwapInfoRecord);
  static constexpr Field kFields[] = {
      PLATKIT_FIELD(0, uint8_t, isSwapping, BOOL, "swapping out now"),
      PLATKIT_FIELD(1, uint64_t, swapTgt, KB, "host swap target"),
      PLATKIT_FIELD(9, uint64_t, swapped, KB, "memory swapped by the host"),
      PLATKIT_FIELD(17, uint64_t, swapRead, KB, "memory read from swap space that still keeps its place there"),
      PLATKIT_FIELD(25, uint64_t, swapIn, KB, "memory swapped in and released from swap space"),
      PLATKIT_FIELD(33, uint64_t, swapOut, KB, "memory swapped out"),
      PLATKIT_GAP(41, 16),
      PLATKIT_FIELD(57, uint64_t, gblSwapRead, KB, "read from the global swap file"),
      PLATKIT_FIELD(65, uint64_t, gblSwapIn, KB, "swapped in from the global swap file"),
      PLATKIT_FIELD(73, uint64_t, gblSwapOut, KB, "swapped out to the global swap file"),
      PLATKIT_FIELD(81, uint64_t, cowSwapper, KB, "swapped out while marked copy-on-write by the kernel"),
      PLATKIT_FIELD(89, uint64_t, discarded, KB, "swapped memory discarded"),
      PLATKIT_FIELD(97, uint32_t, vmmSwapOn, COUNT, "times the VMM's swapper was turned on"),
      PLATKIT_FIELD(101, uint32_t, hvcSwapOn, COUNT, "times the kernel's swapper was turned on"),
      PLATKIT_FIELD(105, uint32_t, currentSwapper, NUMBER, "0 for the VMM's swapper, else the kernel's"),
      PLATKIT_GAP(109, 28),
      PLATKIT_FIELD(137, uint64_t, totalReg, KB, "space in the regular swap file"),
      PLATKIT_FIELD(145, uint64_t, freeReg, KB, "free space in the regular swap file"),
      PLATKIT_FIELD(153, uint64_t, cptTgt, KB, "checkpoint memory to read"),
      PLATKIT_FIELD(161, uint64_t, cptRead, KB, "checkpoint memory read"),
      PLATKIT_FIELD(169, uint64_t, cptWritten, KB, "checkpoint memory written"),
      PLATKIT_FIELD(177, uint64_t, totalMig, KB, "space in the migration swap file"),
      PLATKIT_FIELD(185, uint64_t, freeMig, KB, "free space in the migration swap file"),
      PLATKIT_FIELD(193, uint32_t, cacheUsage, KB, "part of the swap-slot cache in use"),
      PLATKIT_GAP(197, 12),
      PLATKIT_FIELD(209, uint64_t, swapoutReady, NUMBER, "ready time of the swap-out client, in an unknown unit"),
      PLATKIT_GAP(217, 3),
  };
};

template <>
struct RecordTable<UwMemoryStatsRecord> {
  PLATKIT_TABLE_OF(UwMemoryStatsRecord);
  static constexpr Field kFields[] = {
      PLATKIT_FIELD(0, uint64_t, min, KB, "configured reservation"),
      PLATKIT_FIELD(8, uint64_t, max, KB, "configured limit; all bits set: unlimited"),
      PLATKIT_FIELD(16, uint64_t, minLimit, KB, "configured limit of the reservation; all bits set: unlimited"),
      PLATKIT_FIELD(24, int32_t, shares, COUNT, "configured shares"),
      PLATKIT_FIELD(28, int32_t, memSizeLimit, KB, "limit of the address space; -1: unlimited"),
      PLATKIT_GAP(32, 4),
      PLATKIT_FIELD(36, uint64_t, memSize, KB, "address space in use"),
      PLATKIT_FIELD(44, uint64_t, touched, KB, "memory touched"),
      PLATKIT_GAP(52, 16),
      PLATKIT_FIELD(68, uint64_t, allocTgt, KB, "allocation target"),
      PLATKIT_GAP(76, 48),
      PLATKIT_FIELD(124, uint64_t, zipped, KB, "compressed memory"),
      PLATKIT_GAP(132, 40),
      PLATKIT_FIELD(172, uint64_t, mapped, KB, "address space backed by memory (private, shared and pinned)"),
      PLATKIT_GAP(180, 8),
      PLATKIT_FIELD(188, uint64_t, sharedSaved, KB, "memory saved by page sharing"),
      PLATKIT_FIELD(196, uint64_t, zipSaved, KB, "memory saved by compression"),
      PLATKIT_GAP(204, 8),
      PLATKIT_FIELD(212, uint64_t, swapTgt, KB, "swap target"),
      PLATKIT_GAP(220, 8),
      PLATKIT_FIELD(228, uint64_t, swapScope, NUMBER, "swap scope"),
      PLATKIT_FIELD(236, uint8_t, useReliableMem, BOOL, "uses reliable memory"),
      PLATKIT_GAP(237, 27),
      PLATKIT_FIELD(264, uint64_t, totalResv, KB, "total reservation"),
      PLATKIT_FIELD(272, uint64_t, pinnedResv, KB, "reservation for pinning"),
      PLATKIT_FIELD(280, uint64_t, memBStore, KB, "memory backing store consumed"),
      PLATKIT_FIELD(288, uint64_t, swapBStore, KB, "swap backing store consumed"),
      PLATKIT_FIELD(296, uint64_t, swappable, KB, "mapped and unshared memory that can be reclaimed"),
      PLATKIT_FIELD(304, uint64_t, shm, KB, "shared-memory segments"),
      PLATKIT_FIELD(312, uint64_t, cow, KB, "copy-on-write memory"),
      PLATKIT_FIELD(320, uint64_t, pageable, KB, "accounted pageable memory"),
      PLATKIT_FIELD(328, uint64_t, pageableUnacct, KB, "unaccounted pageable memory"),
      PLATKIT_FIELD(336, uint64_t, swapped, KB, "swapped to secondary storage"),
      PLATKIT_FIELD(344, uint64_t, pinned, KB, "mapped memory that cannot be swapped"),
      PLATKIT_FIELD(352, uint64_t, prealloced, KB, "preallocated memory"),
  };
};

template <>
struct RecordTable<GuestStatsRecord> {
  PLATKIT_TABLE_OF(GuestStatsRecord);
  static constexpr Field kFields[] = {
      PLATKIT_FIELD(0, uint64_t, memTotal, KB, "the guest's total memory; all bits set: not available"),
      PLATKIT_FIELD(8, uint32_t, lpageTotal, COUNT,
                    "large pages available to the guest's applications; all bits set: not available"),
      PLATKIT_FIELD(12, uint64_t, memNeeded, KB, "memory that the current workload needs; all bits set: not available"),
  };
};

template <>
struct RecordTable<ZipStatsRecord> {
  PLATKIT_TABLE_OF(ZipStatsRecord);
  static constexpr Field kFields[] = {
      PLATKIT_FIELD(0, uint64_t, totalCache, KB, "compression cache configured"),
      PLATKIT_FIELD(8, uint64_t, usedCache, KB, "compression cache used"),
      PLATKIT_FIELD(16, uint64_t, maxCache, KB, "largest compression cache"),
      PLATKIT_FIELD(24, uint32_t, nrFreeHalf, COUNT, "free half pages"),
      PLATKIT_FIELD(28, uint32_t, nrFreeQuarter, COUNT, "free quarter pages"),
      PLATKIT_FIELD(32, uint64_t, zipped, KB, "memory compressed"),
      PLATKIT_FIELD(40, uint64_t, unZipped, KB, "memory decompressed"),
      PLATKIT_GAP(48, 8),
      PLATKIT_FIELD(56, uint64_t, zipRejected, KB, "memory rejected by the compression cache"),
      PLATKIT_GAP(64, 16),
      PLATKIT_FIELD(80, uint64_t, avgZipTime, USEC, "average compression time"),
      PLATKIT_GAP(88, 16),
      PLATKIT_FIELD(104, uint64_t, avgUnzipTime, USEC, "average decompression time"),
      PLATKIT_GAP(112, 24),
  };
};

template <>
struct RecordTable<LPageStatsRecord> {
  PLATKIT_TABLE_OF(LPageStatsRecord);
  static constexpr Field kFields[] = {
      PLATKIT_FIELD(0, uint32_t, backings2M, COUNT, "current 2 MB large-page backings"),
      PLATKIT_FIELD(4, uint64_t, allocSuccess, COUNT, "backing attempts that succeeded"),
      PLATKIT_FIELD(12, uint64_t, failNoMem, COUNT, "attempts that failed for lack of memory"),
      PLATKIT_FIELD(20, uint64_t, failPinned, COUNT, "attempts that failed because of pinning"),
      PLATKIT_FIELD(28, uint64_t, failSwapped, COUNT, "attempts abandoned to avoid excessive swap-ins"),
      PLATKIT_GAP(36, 16),
      PLATKIT_FIELD(52, uint64_t, failPinnedLate, COUNT, "attempts that failed because of late pinning"),
      PLATKIT_GAP(60, 24),
      PLATKIT_FIELD(84, uint32_t, lockSuccess, COUNT,
                    "guest large-page locking attempts, without those in lockSuccess2"),
      PLATKIT_FIELD(88, uint64_t, broken, COUNT, "backings broken"),
      PLATKIT_FIELD(96, uint32_t, maxSwapThreshold, COUNT, "current maximum swap-in threshold"),
      PLATKIT_GAP(100, 4),
      PLATKIT_FIELD(104, uint32_t, backings1G, COUNT, "current 1 GB large-page backings"),
      PLATKIT_GAP(108, 32),
      PLATKIT_FIELD(140, uint32_t, lockSuccess2, COUNT,
                    "guest large-page locking attempts, without those in lockSuccess"),
      PLATKIT_GAP(144, 4),
  };
};

template <>
struct RecordTable<RemapStatsRecord> {
  PLATKIT_TABLE_OF(RemapStatsRecord);
  static constexpr Field kFields[] = {
      PLATKIT_FIELD(0, uint64_t, added, PAGES, "pages ever added"),
      PLATKIT_FIELD(8, uint64_t, filtered, PAGES, "pages ever filtered"),
      PLATKIT_FIELD(16, uint64_t, prepared, PAGES, "pages ever prepared"),
      PLATKIT_FIELD(24, uint64_t, staged, PAGES, "pages ever staged"),
      PLATKIT_FIELD(32, uint64_t, canceled, PAGES, "pages ever canceled"),
      PLATKIT_FIELD(40, uint64_t, remapped, PAGES, "pages ever remapped"),
      PLATKIT_FIELD(48, uint64_t, cUnprepared, PAGES, "pages now unprepared"),
      PLATKIT_FIELD(56, uint64_t, cPrepared, PAGES, "pages now prepared"),
      PLATKIT_FIELD(64, uint64_t, cStaged, PAGES, "pages now staged"),
      PLATKIT_GAP(72, 8),
  };
};

template <>
struct RecordTable<TotalCommonRecord> {
  PLATKIT_TABLE_OF(TotalCommonRecord);
  static constexpr Field kFields[] = {
      PLATKIT_GAP(0, 264),
  };
};

template <>
struct RecordTable<VmmLeaderIDRecord> {
  PLATKIT_TABLE_OF(VmmLeaderIDRecord);
  static constexpr Field kFields[] = {
      PLATKIT_FIELD(0, uint32_t, vmmLeaderID, ID, "memory client of the VM's monitor world"),
  };
};

}  // namespace platkit

#endif  // PLATKIT_CATALOGUE_CLIENT_RECORDS_H
