// The records of buddy allocators and of memory nodes, from /proc/buddyinfo.
//
// A memory node is a NUMA node with memory. Memory nodes are numbered from 0 in the order of the NUMA nodes, without
// gaps.
#ifndef PLATKIT_LINUX_RECORDS_BUDDY_RECORDS_H
#define PLATKIT_LINUX_RECORDS_BUDDY_RECORDS_H

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platkit/linux/files/fresh.h"
#include "platkit/linux/kernel/buddyinfo.h"
#include "platkit/linux/kernel/page_size.h"
#include "platkit/param_list.h"
#include "platkit/records.h"

namespace platkit {

// A memory node has up to two buddy allocators (buddies): one for its low zones (see IsLowZone), and one for all
// others. If the file cannot be read, operations return the status of the read.
class BuddyRecords {
 public:
  BuddyRecords(HostFiles &files, PageSize &pageSize) : files_(files), pageSize_(pageSize) {}

  // Lists the buddies, such as "memmap-00-lo", in the order of the memory nodes, low zones first. Lists at most 99,
  // because kestrel accepts no more.
  [[nodiscard]] HVC_ReturnStatus List(ParamList &list);

  // HVC_NOT_FOUND if there is no such buddy.
  [[nodiscard]] HVC_ReturnStatus Comprehensive(std::string_view name, BuddyComprehensiveRecord &record);

  // HVC_NOT_FOUND if there is no such memory node.
  [[nodiscard]] HVC_ReturnStatus MemNode(int64_t memNode, MemNodeRecord &record);
  [[nodiscard]] HVC_ReturnStatus FindNumaNode(int64_t memNode, uint64_t &numaNode);

  [[nodiscard]] HVC_ReturnStatus CountMemNodes(MemInfoRecord &record);

 private:
  static constexpr size_t kSizes = std::size(BuddyComprehensiveRecord{}.sizes);

  struct Buddy {
    uint64_t numaNode;
    bool isLow;
    std::string name = {};
    std::array<Figure, kSizes> free = {};  // buffers of 2^index pages of 4 KB
  };

  struct Buddies {
    HVC_ReturnStatus status = HVC_FAILURE;
    std::vector<Buddy> buddies;       // in the order of List()
    std::vector<uint64_t> numaNodes;  // by memory node
  };

  const Buddies &Read();
  Buddies Arrange(const Buddyinfo &info);
  void AddZone(const BuddyZone &zone, Buddy &buddy);

  HostFiles &files_;
  PageSize &pageSize_;
  Fresh<Buddies> buddies_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_RECORDS_BUDDY_RECORDS_H
