// The pools of huge pages: .../hugepages/hugepages-<size>kB, host-wide or of one NUMA node.
#ifndef PLATKIT_LINUX_KERNEL_HUGETLB_H
#define PLATKIT_LINUX_KERNEL_HUGETLB_H

#include <cstdint>
#include <string>
#include <vector>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// Whether the kernel has a folder for each NUMA node. If not, the host has a single node.
bool HasNumaNodeFolders(HostFiles &files);

// The folders of pools, host-wide and of a NUMA node.
inline constexpr const char *kHugetlbFolder = "sys/kernel/mm/hugepages";
std::string HugetlbFolderOfNode(uint64_t numaNode);

// Lists the page sizes of the pools in a folder, in KB, in ascending order. A kernel without huge pages has none.
[[nodiscard]] HVC_ReturnStatus ListHugetlbSizes(HostFiles &files, const std::string &folder,
                                                std::vector<uint64_t> &sizes);

// The figures of a pool, in pages of its size.
struct HugetlbPool {
  Figure pages;  // nr_hugepages; absent: the pool does not exist
  Figure free;   // free_hugepages, less the pages that are promised to mappings (resv_hugepages)
};

// The kernel counts promised pages only for the whole host, so the figure is a lower bound of a node's free pages.
HugetlbPool ReadHugetlbPool(HostFiles &files, const std::string &folder, uint64_t pageKB);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_HUGETLB_H
