#include "platkit/linux/records/large_page_pool_records.h"

#include <vector>

#include "platkit/linux/files/text_scanner.h"
#include "platkit/linux/kernel/hugetlb.h"
#include "platkit/linux/kernel/page_size.h"

namespace platkit {
namespace {

constexpr uint64_t kSmallPageKB = 4;

constexpr std::string_view kNamePrefix = "hugepages-";

// Uses the largest unit in which the size is a whole number, so names are short and unique.
std::string NameOf(uint64_t pageKB) {
  uint64_t size = pageKB;
  for (const char *unit : {"KB", "MB"}) {
    if (size < 1024 || size % 1024 != 0) return std::string(kNamePrefix) + std::to_string(size) + unit;
    size /= 1024;
  }
  return std::string(kNamePrefix) + std::to_string(size) + "GB";
}

// The page size in a pool's name, in KB; 0 if this cannot be the name of a pool.
uint64_t PageSizeOf(std::string_view name) {
  TextScanner scanner(name);
  uint64_t number = 0;
  uint64_t size = 0;
  if (!scanner.Take(kNamePrefix) || !scanner.TakeNumber(number)) return 0;
  const std::string_view unit = scanner.rest();
  const uint64_t factor = unit == "KB" ? 1 : unit == "MB" ? 1024 : unit == "GB" ? 1024 * 1024 : 0;
  if (__builtin_mul_overflow(number, factor, &size)) return 0;
  return NameOf(size) == name ? size : 0;
}

}  // namespace

HVC_ReturnStatus LargePagePoolRecords::PSharePool(int64_t memNode, LPoolStatsRecord &) {
  uint64_t numaNode = 0;
  return nodes_.FindNumaNode(memNode, numaNode);
}

HVC_ReturnStatus LargePagePoolRecords::FindFolder(int64_t memNode, std::string &folder) {
  uint64_t numaNode = 0;
  const HVC_ReturnStatus status = nodes_.FindNumaNode(memNode, numaNode);
  if (status != HVC_OK) return status;
  const bool hasFolders = hasNumaNodeFolders_.Get(files_.clock(), [this] { return HasNumaNodeFolders(files_); });
  folder = hasFolders ? HugetlbFolderOfNode(numaNode) : kHugetlbFolder;
  return HVC_OK;
}

HVC_ReturnStatus LargePagePoolRecords::List(int64_t memNode, ParamList &list) {
  std::string folder;
  std::vector<uint64_t> sizes;
  HVC_ReturnStatus status = FindFolder(memNode, folder);
  if (status == HVC_OK) status = ListHugetlbSizes(files_, folder, sizes);
  for (size_t i = 0; i < sizes.size() && status == HVC_OK; ++i)
    status = list.Add(NameOf(sizes[i]));
  return status;
}

HVC_ReturnStatus LargePagePoolRecords::Stats(int64_t memNode, std::string_view name, LPoolStatsRecord &record) {
  std::string folder;
  if (const HVC_ReturnStatus status = FindFolder(memNode, folder); status != HVC_OK) return status;
  const uint64_t pageKB = PageSizeOf(name);
  if (pageKB == 0) return HVC_NOT_FOUND;
  const HugetlbPool pool = ReadHugetlbPool(files_, folder, pageKB);
  if (pool.pages.isAbsent()) return HVC_NOT_FOUND;
  record.nrLPages = (pool.pages * pageKB / kRecordLargePageKB).Cell32(0);
  record.nrFreeSPages = (pool.free * pageKB / kSmallPageKB).Cell32(0);
  return HVC_OK;
}

}  // namespace platkit
