// The pools of huge pages that the kernel sets aside, a node and a page size each.
#ifndef PLATKIT_LINUX_RECORDS_LARGE_PAGE_POOL_RECORDS_H
#define PLATKIT_LINUX_RECORDS_LARGE_PAGE_POOL_RECORDS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/records/buddy_records.h"
#include "platkit/param_list.h"
#include "platkit/records.h"

namespace platkit {

// Nodes are memory nodes. HVC_NOT_FOUND for one that the host does not have.
class LargePagePools {
 public:
  LargePagePools(HostFiles &files, Buddies &nodes) : files_(files), nodes_(nodes) {}

  // The pools by their page size, as in "hugepages-2MB".
  [[nodiscard]] HVC_ReturnStatus List(int64_t memNode, ParamList &list);
  [[nodiscard]] HVC_ReturnStatus Stats(int64_t memNode, std::string_view pool, LPoolStatsRecord &record);

  // Page sharing has no pools of its own: that of a node is there, and is empty.
  [[nodiscard]] HVC_ReturnStatus PSharePool(int64_t memNode, LPoolStatsRecord &record);

 private:
  HVC_ReturnStatus FindFolder(int64_t memNode, std::string &folder);

  HostFiles &files_;
  Buddies &nodes_;
  std::optional<bool> hasNodes_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_RECORDS_LARGE_PAGE_POOL_RECORDS_H
