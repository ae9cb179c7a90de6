// Hosts for the host-wide reports. Each has the nodes of one report, and all its figures differ.
#ifndef TESTS_FAULTS_MACHINE_HOSTS_H
#define TESTS_FAULTS_MACHINE_HOSTS_H

#include <string>
#include <vector>

#include "tests/faults/figures.h"
#include "tests/support/standin_host.h"

namespace faults {

// Page-sharing hints. The kernel's count of active hints is not the difference of the other counts.
testing_support::StandinHost HintsHost();
PShareStatsRecord HintFigures();

// Four MemMap buddies of two memory nodes, unsorted, and two other buddies:
//
//   memmap-01-hi, heap-00-lo, memmap-00-hi, memmap-01-lo, kseg-00, memmap-00-lo
//
// Memory node 0 is NUMA node 7, memory node 1 is NUMA node 200. The MemMap buddies are numbered from 1, by node, with
// low before high. Buddy i has 1000 i + k free and 1000 i + 500 + k used buffers of size k.
testing_support::StandinHost BuddyHost();
BuddyComprehensiveRecord BuddyFigures(const Figures &figures);

// A host in soft state, with all amounts and counts of transitions.
testing_support::StandinHost ComprehensiveHost();
ComprehensiveRecord ComprehensiveFigures();
GlobalMemoryRecord GlobalMemoryFigures();

// The large-page pools of two NUMA nodes in order, each with its base number:
//
//   pshare-0 1000, web 2000, a-pool-with-a-long-name 3000, db 4000
//   pshare-1 5000, web 6000, mail 7000
//
// The figures of a pool are its base number plus 1 to 12. The figure without a column has all bits set.
testing_support::StandinHost LargePagesHost();
LPoolStatsRecord LargePagesFigures(const Figures &figures);

// Heaps heap-1, heap-2 and heap-3, whose records call them main, slab and net.
testing_support::StandinHost HeapsHost();
HeapStatsRecord HeapFigures(const std::string &name, const Figures &figures);

// Three volumes of persistent memory with regions and extents:
//
//   vol-1: regions reg-a on nodes 0 and 1, reg-b on node 1; extents 0 and 1
//   vol-2: region  reg-c on node 0;                         extent -1
//   vol-3: regions reg-d on node 1, reg-e on nodes 0 and 1; extents 5 and 6
testing_support::StandinHost PMemHost();

// Hosts of the same kinds whose figures are multiples of their owner's number. An owner is a buddy, pool, heap, region
// or extent. The names of heaps, regions and virtual machines' pools end in that number. The name of a volume ends in
// the product of its owners' numbers.
testing_support::StandinHost BuddyOwnersHost();
testing_support::StandinHost LargePageOwnersHost();
testing_support::StandinHost HeapOwnersHost();
testing_support::StandinHost PMemOwnersHost();

}  // namespace faults

#endif  // TESTS_FAULTS_MACHINE_HOSTS_H
