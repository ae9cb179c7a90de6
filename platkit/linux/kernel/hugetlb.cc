#include "platkit/linux/kernel/hugetlb.h"

#include <algorithm>

#include "platkit/linux/files/folder_reader.h"
#include "platkit/linux/files/text_scanner.h"
#include "platkit/linux/kernel/figure_files.h"

namespace platkit {
namespace {

constexpr std::string_view kNodes = "sys/devices/system/node";
constexpr std::string_view kPoolPrefix = "hugepages-";

// The page size of a folder such as "hugepages-2048kB", in KB; 0 if the folder is not a pool.
uint64_t SizeOfPool(std::string_view folder) {
  uint64_t size = 0;
  TextScanner scanner(folder);
  return scanner.Take(kPoolPrefix) && scanner.TakeNumber(size) && scanner.rest() == "kB" ? size : 0;
}

}  // namespace

bool HasNumaNodeFolders(HostFiles &files) { return files.Exists(HostPath(kNodes)); }

std::string HugetlbFolderOfNode(uint64_t numaNode) {
  std::string folder(kNodes);
  folder += "/node";
  folder += std::to_string(numaNode);
  return folder += "/hugepages";
}

HVC_ReturnStatus ListHugetlbSizes(HostFiles &files, const std::string &folder, std::vector<uint64_t> &sizes) {
  sizes.clear();
  FolderReader entries(files, HostPath(folder));
  for (FolderReader::Entry entry; entries.Next(entry);) {
    if (const uint64_t size = SizeOfPool(entry.name); size != 0) sizes.push_back(size);
  }
  std::sort(sizes.begin(), sizes.end());
  return entries.status() == HVC_NOT_FOUND ? HVC_OK : entries.status();
}

HugetlbPool ReadHugetlbPool(HostFiles &files, const std::string &folder, uint64_t pageKB) {
  const std::string name = "/" + std::string(kPoolPrefix) + std::to_string(pageKB) + "kB";
  const std::string pool = folder + name;
  HugetlbPool result = {.pages = ReadAmount(files, HostPath(pool, "/nr_hugepages")), .free = {}};
  if (result.pages.isAbsent()) return result;
  const Figure promised = ReadAmount(files, HostPath(kHugetlbFolder + name, "/resv_hugepages"));
  result.free = ReadAmount(files, HostPath(pool, "/free_hugepages")).IfAbsent(Figure::Unreadable()) - promised;
  return result;
}

}  // namespace platkit
