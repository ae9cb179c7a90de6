// The buddy allocators of the host, and the memory nodes that they belong to.
//
// A memory node is a NUMA node that has memory. They are numbered from 0 in the order of the NUMA nodes, without the
// gaps that there may be between these.
#ifndef PLATKIT_LINUX_RECORDS_BUDDY_RECORDS_H
#define PLATKIT_LINUX_RECORDS_BUDDY_RECORDS_H

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"
#include "platkit/linux/kernel/page_size.h"
#include "platkit/param_list.h"
#include "platkit/records.h"

namespace platkit {

// A memory node has a buddy for the zones that devices of few address bits need, and one for all others: as many of
// the two as it has such zones. What is read for the list serves each buddy's record once; which memory node stands for
// which NUMA node is as old as what is kept.
class Buddies {
 public:
  Buddies(HostFiles &files, PageSize &pageSize) : files_(files), pageSize_(pageSize) {}

  // In the order of the memory nodes, low memory first; no more than a reader's list takes.
  [[nodiscard]] HVC_ReturnStatus List(ParamList &list);
  [[nodiscard]] HVC_ReturnStatus Comprehensive(std::string_view name, BuddyComprehensiveRecord &record);
  [[nodiscard]] HVC_ReturnStatus MemNode(int64_t memNode, MemNodeRecord &record);
  [[nodiscard]] HVC_ReturnStatus CountMemNodes(MemInfoRecord &record);

  // The NUMA node that a memory node stands for.
  [[nodiscard]] HVC_ReturnStatus FindNumaNode(int64_t memNode, uint64_t &numaNode);

 private:
  static constexpr size_t kSizes = std::size(BuddyComprehensiveRecord{}.sizes);

  struct Buddy {
    uint64_t numaNode;
    bool isLow;
    std::string name = {};
    std::vector<std::string> zones = {};
    std::array<Figure, kSizes> free = {};
    bool given = false;
  };

  HVC_ReturnStatus Read();
  HVC_ReturnStatus ReadOnce() { return isRead_ ? HVC_OK : Read(); }
  void TakeZone(std::string_view line);
  void TakeCounts(std::string_view counts, Buddy &buddy);
  Buddy &BuddyOf(uint64_t numaNode, bool isLow);
  Buddy *Find(std::string_view name);

  HostFiles &files_;
  PageSize &pageSize_;
  bool isRead_ = false;
  bool nodesCounted_ = false;
  std::vector<Buddy> buddies_;
  std::vector<uint64_t> numaNodes_;  // of the memory nodes
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_RECORDS_BUDDY_RECORDS_H
