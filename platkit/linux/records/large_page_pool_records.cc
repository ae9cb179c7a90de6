#include "platkit/linux/records/large_page_pool_records.h"

#include <algorithm>
#include <vector>

#include "platkit/linux/kernel/figure_files.h"

namespace platkit {
namespace {

constexpr uint64_t kSmallPage = 4;     // KB
constexpr uint64_t kLargePage = 2048;  // KB

constexpr std::string_view kNodes = "sys/devices/system/node";
constexpr std::string_view kFolderPrefix = "hugepages-";

// The page size of a folder such as "hugepages-2048kB", in KB; 0 if it is none.
uint64_t SizeOfFolder(std::string_view folder) {
  uint64_t size = 0;
  if (!folder.starts_with(kFolderPrefix) || !folder.ends_with("kB")) return 0;
  folder.remove_prefix(kFolderPrefix.size());
  folder.remove_suffix(2);
  return ParseNumber(folder, size) ? size : 0;
}

// The unit is the largest that is no larger than the size, so that names are short and tell sizes apart.
std::string NameOf(uint64_t size) {
  for (const std::string_view unit : {"KB", "MB"}) {
    if (size < 1024 || size % 1024 != 0) return std::string(kFolderPrefix) + std::to_string(size) + std::string(unit);
    size /= 1024;
  }
  return std::string(kFolderPrefix) + std::to_string(size) + "GB";
}

// The page size of a pool's name; 0 if no pool is called so.
uint64_t SizeOfName(std::string_view name) {
  if (!name.starts_with(kFolderPrefix) || name.size() < kFolderPrefix.size() + 3) return 0;
  const std::string_view unit = name.substr(name.size() - 2);
  const uint64_t factor = unit == "KB" ? 1 : unit == "MB" ? 1024 : unit == "GB" ? 1024 * 1024 : 0;
  const std::string_view digits = name.substr(kFolderPrefix.size(), name.size() - kFolderPrefix.size() - 2);
  uint64_t number = 0;
  uint64_t size = 0;
  if (!ParseNumber(digits, number) || __builtin_mul_overflow(number, factor, &size)) return 0;
  return NameOf(size) == name ? size : 0;
}

}  // namespace

HVC_ReturnStatus LargePagePools::PSharePool(int64_t memNode, LPoolStatsRecord &) {
  uint64_t numaNode = 0;
  return nodes_.FindNumaNode(memNode, numaNode);
}

// A kernel without NUMA has one node, and only the folder of the host.
HVC_ReturnStatus LargePagePools::FindFolder(int64_t memNode, std::string &folder) {
  uint64_t numaNode = 0;
  const HVC_ReturnStatus status = nodes_.FindNumaNode(memNode, numaNode);
  if (status != HVC_OK) return status;
  if (!hasNodes_) hasNodes_ = files_.Exists(HostPath(kNodes));
  folder =
      *hasNodes_ ? std::string(kNodes) + "/node" + std::to_string(numaNode) + "/hugepages" : "sys/kernel/mm/hugepages";
  return HVC_OK;
}

HVC_ReturnStatus LargePagePools::List(int64_t memNode, ParamList &list) {
  std::string path;
  if (const HVC_ReturnStatus status = FindFolder(memNode, path); status != HVC_OK) return status;
  std::vector<uint64_t> sizes;
  FolderReader folder(files_, HostPath(path));
  for (FolderReader::Entry entry; folder.Next(entry);) {
    if (const uint64_t size = SizeOfFolder(entry.name); size != 0) sizes.push_back(size);
  }
  // A kernel without huge pages has no such folder.
  if (folder.status() != HVC_OK && folder.status() != HVC_NOT_FOUND) return folder.status();
  std::sort(sizes.begin(), sizes.end());
  for (const uint64_t size : sizes) {
    if (const HVC_ReturnStatus status = list.Add(NameOf(size)); status != HVC_OK) return status;
  }
  return HVC_OK;
}

HVC_ReturnStatus LargePagePools::Stats(int64_t memNode, std::string_view pool, LPoolStatsRecord &record) {
  std::string path;
  if (const HVC_ReturnStatus status = FindFolder(memNode, path); status != HVC_OK) return status;
  const uint64_t size = SizeOfName(pool);
  const std::string folder = path + "/" + std::string(kFolderPrefix) + std::to_string(size) + "kB";
  const Figure pages = size == 0 ? Figure() : ReadAmount(files_, HostPath(folder, "/nr_hugepages"));
  if (pages.isAbsent()) return HVC_NOT_FOUND;
  const Figure free = ReadAmount(files_, HostPath(folder, "/free_hugepages")).IfAbsent(Figure::Unreadable());
  record.nrLPages = (pages * size / kLargePage).Cell32(0);
  record.nrFreeSPages = (free * size / kSmallPage).Cell32(0);
  return HVC_OK;
}

}  // namespace platkit
