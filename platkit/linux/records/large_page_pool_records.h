// The records of the pools of huge pages, one for each memory node and page size.
#ifndef PLATKIT_LINUX_RECORDS_LARGE_PAGE_POOL_RECORDS_H
#define PLATKIT_LINUX_RECORDS_LARGE_PAGE_POOL_RECORDS_H

#include <cstdint>
#include <string>
#include <string_view>

#include "platkit/linux/files/fresh.h"
#include "platkit/linux/records/buddy_records.h"
#include "platkit/param_list.h"
#include "platkit/records.h"

namespace platkit {

// All operations return HVC_NOT_FOUND if the memory node does not exist; see BuddyRecords.
class LargePagePoolRecords {
 public:
  LargePagePoolRecords(HostFiles &files, BuddyRecords &nodes) : files_(files), nodes_(nodes) {}

  // Lists the pools, such as "hugepages-2MB", by page size.
  [[nodiscard]] HVC_ReturnStatus List(int64_t memNode, ParamList &list);

  // HVC_NOT_FOUND if there is no such pool.
  [[nodiscard]] HVC_ReturnStatus Stats(int64_t memNode, std::string_view pool, LPoolStatsRecord &record);

  // Page sharing has no pools of large pages, so the record stays zeroed.
  [[nodiscard]] HVC_ReturnStatus PSharePool(int64_t memNode, LPoolStatsRecord &record);

 private:
  HVC_ReturnStatus FindFolder(int64_t memNode, std::string &folder);

  HostFiles &files_;
  BuddyRecords &nodes_;
  Fresh<bool> hasNumaNodeFolders_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_RECORDS_LARGE_PAGE_POOL_RECORDS_H
