// Persistent memory: the interleave sets of the host's modules, and the namespaces that are made in them.
//
// A volume is what the kernel calls a region: a range of addresses that one module or several interleaved ones answer.
// The regions of a volume's region store are the kernel's namespaces.
#ifndef PLATKIT_LINUX_RECORDS_PMEM_RECORDS_H
#define PLATKIT_LINUX_RECORDS_PMEM_RECORDS_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/files/kept.h"
#include "platkit/linux/kernel/figure.h"
#include "platkit/param_list.h"
#include "platkit/records.h"

namespace platkit {

// A host without persistent memory has no volumes. Listing the volumes forgets all that is known and kept of them.
class PersistentMemory {
 public:
  explicit PersistentMemory(HostFiles &files) : files_(files) {}

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
    Kept<Figure> size;
    Kept<Figure> numaNode = {};
  };
  using RegionList = std::vector<Region>;

  struct Volume {
    std::string name;
    std::string device;
    std::vector<std::string> namespaces = {};  // the devices
    Kept<RegionList> regions = {};
    Kept<Figure> size = {};
    Kept<std::vector<std::string>> modules = {};
    Kept<bool> isReadOnly = {};
  };

  HVC_ReturnStatus ReadVolumes();
  void NameVolumes();
  std::string CookieOf(const Volume &volume);
  bool IsPersistent(std::string_view device);
  RegionList ReadRegions(const Volume &volume);

  // HVC_NOT_FOUND, or a failure to look, if there is none of that name.
  HVC_ReturnStatus FindVolume(std::string_view name, Volume *&volume);
  HVC_ReturnStatus FindRegion(std::string_view volumeName, std::string_view name, Volume *&volume, Region *&region);

  // A file of a device: without the line end, and empty if it cannot be read; an amount; the NUMA node, absent if the
  // device has none.
  std::string ReadText(std::string_view device, std::string_view file);
  Figure ReadFigure(std::string_view device, std::string_view file);
  Figure ReadNumaNode(std::string_view device);
  std::vector<std::string> ReadModules(const Volume &volume);
  Figure FreeSlots(const std::vector<std::string> &modules);

  HostFiles &files_;
  bool volumesKnown_ = false;
  std::vector<Volume> volumes_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_RECORDS_PMEM_RECORDS_H
