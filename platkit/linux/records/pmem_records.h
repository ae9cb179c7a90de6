// The records of persistent memory.
//
// A volume is a region of the kernel (nd_region): a range of addresses on one module, or on an interleave set of
// several modules. What the records call a region of a volume is a namespace of the kernel.
#ifndef PLATKIT_LINUX_RECORDS_PMEM_RECORDS_H
#define PLATKIT_LINUX_RECORDS_PMEM_RECORDS_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platkit/linux/files/fresh.h"
#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"
#include "platkit/param_list.h"
#include "platkit/records.h"

namespace platkit {

// All operations on a volume or a region return HVC_NOT_FOUND if no volume or region has that name. A host without
// persistent memory has no volumes.
class PmemRecords {
 public:
  explicit PmemRecords(HostFiles &files) : files_(files) {}

  [[nodiscard]] HVC_ReturnStatus Volumes(ParamList &list);
  [[nodiscard]] HVC_ReturnStatus VolumeInfo(std::string_view volume, PMemVolumeRecord &record);
  [[nodiscard]] HVC_ReturnStatus StoreInfo(std::string_view volume, RegionStoreRecord &record);
  [[nodiscard]] HVC_ReturnStatus StoreIsClean(std::string_view volume, RegionStoreCleanRecord &record);
  [[nodiscard]] HVC_ReturnStatus Regions(std::string_view volume, ParamList &list);
  [[nodiscard]] HVC_ReturnStatus RegionInfo(std::string_view volume, std::string_view region, RegionRecord &record);
  [[nodiscard]] HVC_ReturnStatus RegionNodes(std::string_view volume, std::string_view region, ParamList &list);
  [[nodiscard]] HVC_ReturnStatus RegionNode(std::string_view volume, std::string_view region, int64_t numaNode,
                                            RegionNumaRecord &record);
  [[nodiscard]] HVC_ReturnStatus Extents(std::string_view volume, ParamList &list);
  [[nodiscard]] HVC_ReturnStatus Extent(std::string_view volume, int64_t extent, ExtentRecord &record);

 private:
  struct Region {
    std::string name;
    std::string device;
    bool hasUuid;
    Fresh<Figure> size;
    Fresh<Figure> numaNode = {};
  };
  using RegionList = std::vector<Region>;

  struct Volume {
    std::string name;
    std::string device;
    std::vector<std::string> namespaces = {};  // the names of their devices
    Fresh<RegionList> regions = {};
    Fresh<Figure> size = {};
    Fresh<std::vector<std::string>> modules = {};
    Fresh<bool> isReadOnly = {};
  };

  struct VolumeList {
    HVC_ReturnStatus status = HVC_FAILURE;
    std::vector<Volume> volumes = {};
  };

  VolumeList ReadVolumes();
  RegionList ReadRegions(const Volume &volume);

  // The pointers that these functions set are valid until the next operation.
  HVC_ReturnStatus FindVolume(std::string_view name, Volume *&volume);
  HVC_ReturnStatus FindRegion(std::string_view volumeName, std::string_view name, Volume *&volume, Region *&region);

  VolumeList &FreshVolumes();
  RegionList &RegionsOf(Volume &volume);
  Figure SizeOf(Volume &volume);
  Figure SizeOf(Region &region);
  Figure NumaNodeOf(Region &region);
  const std::vector<std::string> &ModulesOf(Volume &volume);
  bool IsReadOnly(Volume &volume);
  Figure FreeSlots(const std::vector<std::string> &modules);

  HostFiles &files_;
  Fresh<VolumeList> volumes_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_RECORDS_PMEM_RECORDS_H
