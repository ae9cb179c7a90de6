#include "platkit/linux/records/pmem_records.h"

#include <algorithm>
#include <utility>

#include "platkit/linux/files/printable.h"
#include "platkit/linux/kernel/nd_devices.h"
#include "platkit/linux/kernel/nd_openers.h"
#include "platkit/linux/kernel/nd_region.h"
#include "platkit/linux/kernel/nvdimm.h"
#include "platkit/linux/kernel/page_size.h"

namespace platkit {
namespace {

constexpr uint64_t kBlock = uint64_t{2} << 20;
constexpr size_t kUuidLength = 36;

Figure BlocksRoundedUp(Figure bytes) { return (bytes + Figure(kBlock - 1)) / kBlock; }

bool IsNameTaken(std::string_view name, const auto &known) {
  return std::any_of(known.begin(), known.end(), [name](const auto &other) { return other.name == name; });
}

}  // namespace

HVC_ReturnStatus PmemRecords::Volumes(ParamList &list) {
  const VolumeList &all = FreshVolumes();
  if (all.status != HVC_OK) return all.status;
  for (const Volume &volume : all.volumes) {
    if (const HVC_ReturnStatus status = list.Add(volume.name); status != HVC_OK) return status;
  }
  return HVC_OK;
}

PmemRecords::VolumeList &PmemRecords::FreshVolumes() {
  return volumes_.Get(files_.clock(), [this] { return ReadVolumes(); });
}

// The kernel numbers regions in the order of discovery, which can change. The cookie of an interleave set stays the
// same across reboots, so a volume is named after its cookie if it has one.
PmemRecords::VolumeList PmemRecords::ReadVolumes() {
  std::vector<std::string> devices;
  VolumeList all = {.status = ListNdDevices(files_, devices)};
  uint64_t number = 0;
  uint64_t owner = 0;
  for (const std::string &device : devices) {
    if (!ParseNdNumber(device, "region", number) || !IsPersistentRegion(files_, device)) continue;
    Volume &volume = all.volumes.emplace_back(Volume{.name = device, .device = device});
    for (const std::string &other : devices) {
      if (ParseNdNumber(other, "namespace", owner) && owner == number) volume.namespaces.push_back(other);
    }
  }
  for (Volume &volume : all.volumes) {
    const std::string cookie = ReadRegionCookie(files_, volume.device);
    std::string name = "iset-" + cookie;
    if (!cookie.empty() && !IsNameTaken(name, all.volumes)) volume.name = std::move(name);
  }
  return all;
}

HVC_ReturnStatus PmemRecords::FindVolume(std::string_view name, Volume *&volume) {
  VolumeList &all = FreshVolumes();
  if (all.status != HVC_OK) return all.status;
  const auto found = std::ranges::find(all.volumes, name, &Volume::name);
  if (found == all.volumes.end() || !NdDeviceExists(files_, found->device)) return HVC_NOT_FOUND;
  volume = &*found;
  return HVC_OK;
}

PmemRecords::RegionList &PmemRecords::RegionsOf(Volume &volume) {
  return volume.regions.Get(files_.clock(), [&] { return ReadRegions(volume); });
}

Figure PmemRecords::SizeOf(Volume &volume) {
  return volume.size.Get(files_.clock(), [&] { return ReadNdFigure(files_, volume.device, "size"); });
}

Figure PmemRecords::SizeOf(Region &region) {
  return region.size.Get(files_.clock(), [&] { return ReadNdFigure(files_, region.device, "size"); });
}

Figure PmemRecords::NumaNodeOf(Region &region) {
  return region.numaNode.Get(files_.clock(), [&] { return ReadNdNumaNode(files_, region.device); });
}

const std::vector<std::string> &PmemRecords::ModulesOf(Volume &volume) {
  return volume.modules.Get(files_.clock(), [&] { return ReadRegionModules(files_, volume.device); });
}

bool PmemRecords::IsReadOnly(Volume &volume) {
  return volume.isReadOnly.Get(files_.clock(), [&] { return ReadNdText(files_, volume.device, "read_only") == "1"; });
}

HVC_ReturnStatus PmemRecords::VolumeInfo(std::string_view name, PMemVolumeRecord &) {
  Volume *volume = nullptr;
  return FindVolume(name, volume);
}

HVC_ReturnStatus PmemRecords::StoreInfo(std::string_view name, RegionStoreRecord &record) {
  Volume *volume = nullptr;
  if (const HVC_ReturnStatus status = FindVolume(name, volume); status != HVC_OK) return status;
  const RegionList &regions = RegionsOf(*volume);
  const Figure blocks = SizeOf(*volume).IfAbsent(Figure::Unreadable()) / kBlock;
  const Figure available = ReadNdFigure(files_, volume->device, "available_size") / kBlock;
  const Figure freeSlots = FreeSlots(ModulesOf(*volume));
  record.totalBlocks = blocks.Cell(0);
  record.availableBlocks = available.Cell(0);
  // This is the sum of the regions. Total - available would include free space that is too small for an aligned
  // namespace.
  Figure allocated(0);
  for (Region &region : RegionsOf(*volume))
    allocated = allocated + BlocksRoundedUp(SizeOf(region));
  record.allocatedBlocks = record.reservedBlocks = allocated.Cell(0);
  record.freeRegions = freeSlots.Cell32(0);
  record.totalRegions = (Figure(regions.size()) + freeSlots).Cell32(0);
  return HVC_OK;
}

// A region uses one label on each of its modules, so the module with the fewest free labels limits the number of
// regions.
Figure PmemRecords::FreeSlots(const std::vector<std::string> &modules) {
  Figure fewest = modules.empty() ? Figure(0) : Figure::Unlimited();
  for (const std::string &module : modules)
    fewest = Lower(fewest, ReadFreeLabelSlots(files_, module));
  return fewest;
}

HVC_ReturnStatus PmemRecords::StoreIsClean(std::string_view name, RegionStoreCleanRecord &record) {
  Volume *volume = nullptr;
  if (const HVC_ReturnStatus status = FindVolume(name, volume); status != HVC_OK) return status;
  const std::vector<std::string> &modules = ModulesOf(*volume);
  record.isClean =
      std::ranges::none_of(modules, [this](const std::string &module) { return HasNvdimmFailed(files_, module); });
  return HVC_OK;
}

// A namespace of size 0 does not exist yet: the kernel offers it for creation.
PmemRecords::RegionList PmemRecords::ReadRegions(const Volume &volume) {
  RegionList regions;
  for (const std::string &device : volume.namespaces) {
    const Clock::Time now = files_.clock().Now();
    const Figure size = ReadNdFigure(files_, device, "size");
    if (size == Figure(0) || (size.isAbsent() && !NdDeviceExists(files_, device))) continue;
    const std::string text = ReadNdText(files_, device, "uuid");
    const bool hasUuid = text.size() == kUuidLength;
    const std::string uuid = PrintableName(text, kUuidLength);
    regions.push_back({.name = hasUuid && !IsNameTaken(uuid, regions) ? uuid : device,
                       .device = device,
                       .hasUuid = hasUuid,
                       .size = {size.IfAbsent(Figure::Unreadable()), now}});
  }
  return regions;
}

HVC_ReturnStatus PmemRecords::Regions(std::string_view name, ParamList &list) {
  Volume *volume = nullptr;
  if (const HVC_ReturnStatus status = FindVolume(name, volume); status != HVC_OK) return status;
  for (const Region &region : RegionsOf(*volume)) {
    if (const HVC_ReturnStatus status = list.Add(region.name); status != HVC_OK) return status;
  }
  return HVC_OK;
}

HVC_ReturnStatus PmemRecords::FindRegion(std::string_view volumeName, std::string_view name, Volume *&volume,
                                         Region *&region) {
  if (const HVC_ReturnStatus status = FindVolume(volumeName, volume); status != HVC_OK) return status;
  RegionList &regions = RegionsOf(*volume);
  const auto found = std::ranges::find(regions, name, &Region::name);
  if (found == regions.end() || !NdDeviceExists(files_, found->device)) return HVC_NOT_FOUND;
  region = &*found;
  return HVC_OK;
}

HVC_ReturnStatus PmemRecords::RegionInfo(std::string_view volumeName, std::string_view name, RegionRecord &record) {
  Volume *volume = nullptr;
  Region *region = nullptr;
  if (const HVC_ReturnStatus status = FindRegion(volumeName, name, volume, region); status != HVC_OK) return status;
  const Figure size = SizeOf(*region);
  const Figure node = NumaNodeOf(*region);
  const std::string mode = ReadNdText(files_, region->device, "mode");
  record.size = size.Cell(HVC_KB_NONE);
  record.reservedBlocks = record.allocatedBlocks = BlocksRoundedUp(size).Cell(HVC_KB_NONE);
  record.openCount = CountNdOpeners(files_, region->device).Cell32(0);
  record.flags = HVC_REGION_ALLOCATED;
  if (IsReadOnly(*volume)) record.flags |= HVC_REGION_READ_ONLY;
  // Programs map a dax namespace themselves. In any other mode, a namespace is a block device.
  if (!mode.empty() && mode != "dax") record.flags |= HVC_REGION_BLOCK_DEVICE;
  if (region->hasUuid) record.flags |= HVC_REGION_PERSISTENT_RESERVATION;
  if (const uint64_t bit = node.Cell(64); bit < 64) record.numaAffinityMask = uint64_t{1} << bit;
  return HVC_OK;
}

HVC_ReturnStatus PmemRecords::RegionNodes(std::string_view volumeName, std::string_view name, ParamList &list) {
  Volume *volume = nullptr;
  Region *region = nullptr;
  if (const HVC_ReturnStatus status = FindRegion(volumeName, name, volume, region); status != HVC_OK) return status;
  const Figure node = NumaNodeOf(*region);
  return node.isAbsent() ? HVC_OK : list.Add(static_cast<int64_t>(node.Cell(0)));
}

HVC_ReturnStatus PmemRecords::RegionNode(std::string_view volumeName, std::string_view name, int64_t numaNode,
                                         RegionNumaRecord &record) {
  Volume *volume = nullptr;
  Region *region = nullptr;
  if (const HVC_ReturnStatus status = FindRegion(volumeName, name, volume, region); status != HVC_OK) return status;
  if (numaNode < 0 || NumaNodeOf(*region) != Figure(static_cast<uint64_t>(numaNode))) return HVC_NOT_FOUND;
  record.numaNode = static_cast<uint32_t>(numaNode);
  record.allocatedBlocks = BlocksRoundedUp(SizeOf(*region)).Cell(HVC_KB_NONE);
  return HVC_OK;
}

HVC_ReturnStatus PmemRecords::Extents(std::string_view name, ParamList &list) {
  Volume *volume = nullptr;
  const HVC_ReturnStatus status = FindVolume(name, volume);
  return status == HVC_OK ? list.Add(int64_t{0}) : status;
}

// A volume is one range of addresses, so it has one extent.
HVC_ReturnStatus PmemRecords::Extent(std::string_view name, int64_t extent, ExtentRecord &record) {
  Volume *volume = nullptr;
  if (const HVC_ReturnStatus status = FindVolume(name, volume); status != HVC_OK) return status;
  if (extent != 0) return HVC_NOT_FOUND;
  const Figure size = SizeOf(*volume);
  const Figure first = ReadRegionStart(files_, volume->device);
  record.endBlock = (BlocksRoundedUp(size.IfAbsent(Figure::Unreadable())) - Figure(1)).Cell(0);
  record.startMPN = (first / kRecordPage).Cell(0);
  record.endMPN = ((first + size - Figure(1)) / kRecordPage).Cell(0);
  record.numaNode = ReadNdNumaNode(files_, volume->device).Cell(HVC_KB_NONE);
  return HVC_OK;
}

}  // namespace platkit
