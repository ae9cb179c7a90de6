#include "platkit/linux/records/pmem_records.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "platkit/linux/kernel/figure_files.h"
#include "platkit/linux/kernel/page_size.h"
#include "platkit/linux/records/printable.h"

namespace platkit {
namespace {

constexpr std::string_view kDevices = "sys/bus/nd/devices";
constexpr uint64_t kBlock = uint64_t{2} << 20;
constexpr uint64_t kMostModules = 64;  // that one volume is interleaved over
constexpr size_t kUuidLength = 36;

// The records that share what is read of a volume or region, as numbers.
enum ReaderOfFiles : uint32_t { kStore, kClean, kList, kInfo, kNodes, kNode, kExtent };

// The number of a device such as "region12", and of the region that "namespace12.3" lies in; false if the name is none
// of these.
bool NumberAfter(std::string_view name, std::string_view kind, uint64_t &number) {
  if (!name.starts_with(kind)) return false;
  name.remove_prefix(kind.size());
  if (name.find_first_not_of("0123456789.") != std::string_view::npos) return false;
  return ParseNumber(name.substr(0, name.find('.')), number);
}

// "0x1a2b", as the kernel writes addresses and cookies.
bool ParseHex(std::string_view text, uint64_t &value) {
  if (!text.starts_with("0x")) return false;
  const char *end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data() + 2, end, value, 16);
  return error == std::errc() && stop == end;
}

Figure BlocksUp(Figure bytes) { return (bytes + Figure(kBlock - 1)) / kBlock; }

bool IsKnownName(std::string_view name, const auto &known) {
  return std::any_of(known.begin(), known.end(), [name](const auto &other) { return other.name == name; });
}

}  // namespace

std::string PersistentMemory::ReadText(std::string_view device, std::string_view file) {
  char buffer[256];
  std::string_view text;
  if (files_.ReadShort(HostPath(kDevices, "/", device, "/", file), buffer, text) != HVC_OK) return {};
  std::string line(text.substr(0, text.find('\n')));
  std::transform(line.begin(), line.end(), line.begin(), Printable);
  return line;
}

Figure PersistentMemory::ReadFigure(std::string_view device, std::string_view file) {
  const Figure figure = ReadAmount(files_, HostPath(kDevices, "/", device, "/", file));
  return figure == Figure::Unlimited() ? Figure::Unreadable() : figure;
}

Figure PersistentMemory::ReadNumaNode(std::string_view device) {
  const std::string text = ReadText(device, "numa_node");
  uint64_t node = 0;
  return ParseNumber(text, node) && node <= INT32_MAX ? Figure(node) : Figure();
}

HVC_ReturnStatus PersistentMemory::Volumes(ParamList &list) {
  if (const HVC_ReturnStatus status = ReadVolumes(); status != HVC_OK) return status;
  for (const Volume &volume : volumes_) {
    if (const HVC_ReturnStatus status = list.Add(volume.name); status != HVC_OK) return status;
  }
  return HVC_OK;
}

HVC_ReturnStatus PersistentMemory::ReadVolumes() {
  volumesKnown_ = false;
  volumes_.clear();
  std::vector<std::string> devices;
  FolderReader folder(files_, HostPath(kDevices));
  for (FolderReader::Entry entry; folder.Next(entry);)
    devices.emplace_back(entry.name);
  // Without persistent memory, there may be no such folder.
  if (folder.status() != HVC_OK && folder.status() != HVC_NOT_FOUND) return folder.status();
  // By number: region2 comes before region10.
  std::sort(devices.begin(), devices.end(), [](const std::string &a, const std::string &b) {
    return a.size() != b.size() ? a.size() < b.size() : a < b;
  });
  uint64_t number = 0;
  uint64_t owner = 0;
  for (const std::string &device : devices) {
    if (!NumberAfter(device, "region", number) || !IsPersistent(device)) continue;
    Volume &volume = volumes_.emplace_back(Volume{.name = device, .device = device});
    for (const std::string &other : devices) {
      if (NumberAfter(other, "namespace", owner) && owner == number) volume.namespaces.push_back(other);
    }
  }
  NameVolumes();
  volumesKnown_ = true;
  return HVC_OK;
}

// Regions of other types are ranges that lose their content with the power, and, in older kernels, windows onto the
// same modules.
bool PersistentMemory::IsPersistent(std::string_view device) {
  const std::string type = ReadText(device, "devtype");
  return type.empty() || type == "nd_pmem";
}

// The kernel numbers its regions as it finds them; the cookie of an interleave set stays the same from start to start.
void PersistentMemory::NameVolumes() {
  for (Volume &volume : volumes_) {
    std::string name = CookieOf(volume);
    if (!name.empty() && !IsKnownName(name, volumes_)) volume.name = std::move(name);
  }
}

std::string PersistentMemory::CookieOf(const Volume &volume) {
  const std::string text = ReadText(volume.device, "set_cookie");
  uint64_t cookie = 0;
  return ParseHex(text, cookie) && cookie != 0 ? "iset-" + text.substr(2) : std::string();
}

HVC_ReturnStatus PersistentMemory::FindVolume(std::string_view name, Volume *&volume) {
  if (!volumesKnown_) {
    if (const HVC_ReturnStatus status = ReadVolumes(); status != HVC_OK) return status;
  }
  const auto found = std::find_if(volumes_.begin(), volumes_.end(), [name](const Volume &v) { return v.name == name; });
  if (found == volumes_.end() || !files_.Exists(HostPath(kDevices, "/", found->device))) return HVC_NOT_FOUND;
  volume = &*found;
  return HVC_OK;
}

HVC_ReturnStatus PersistentMemory::VolumeInfo(std::string_view name, PMemVolumeRecord &) {
  Volume *volume = nullptr;
  return FindVolume(name, volume);
}

HVC_ReturnStatus PersistentMemory::StoreInfo(std::string_view name, RegionStoreRecord &record) {
  Volume *volume = nullptr;
  if (const HVC_ReturnStatus status = FindVolume(name, volume); status != HVC_OK) return status;
  const RegionList &regions = volume->regions.For(kStore, [&] { return ReadRegions(*volume); });
  const Figure size = volume->size.For(kStore, [&] { return ReadFigure(volume->device, "size"); });
  const Figure blocks = size.IfAbsent(Figure::Unreadable()) / kBlock;
  const Figure available = ReadFigure(volume->device, "available_size") / kBlock;
  const Figure freeSlots = FreeSlots(volume->modules.For(kStore, [&] { return ReadModules(*volume); }));
  record.totalBlocks = blocks.Cell(0);
  record.availableBlocks = available.Cell(0);
  record.allocatedBlocks = record.reservedBlocks = (blocks - available).Cell(0);
  record.freeRegions = freeSlots.Cell32(0);
  record.totalRegions = (Figure(regions.size()) + freeSlots).Cell32(0);
  return HVC_OK;
}

// "nmem0,0,268435456,0": a module, and the part of it that belongs to the volume.
std::vector<std::string> PersistentMemory::ReadModules(const Volume &volume) {
  std::vector<std::string> modules;
  const uint64_t count = std::min(ReadFigure(volume.device, "mappings").Cell(0), kMostModules);
  for (uint64_t i = 0; i < count; ++i) {
    const std::string mapping = ReadText(volume.device, "mapping" + std::to_string(i));
    uint64_t number = 0;
    std::string module = mapping.substr(0, mapping.find(','));
    if (NumberAfter(module, "nmem", number)) modules.push_back(std::move(module));
  }
  return modules;
}

// A region takes a label on each of its modules. Those without labels have no such file, or one that cannot be read.
Figure PersistentMemory::FreeSlots(const std::vector<std::string> &modules) {
  Figure fewest = modules.empty() ? Figure(0) : Figure::Unlimited();
  for (const std::string &module : modules) {
    char buffer[64];
    std::string_view text;
    const HVC_ReturnStatus status = files_.ReadShort(HostPath(kDevices, "/", module, "/available_slots"), buffer, text);
    const Figure ifNotRead = status == HVC_NO_PERMISSION ? Figure::Unreadable() : Figure(0);
    fewest = Lower(fewest, status == HVC_OK ? ParseAmount(text) : ifNotRead);
  }
  return fewest;
}

HVC_ReturnStatus PersistentMemory::StoreIsClean(std::string_view name, RegionStoreCleanRecord &record) {
  Volume *volume = nullptr;
  if (const HVC_ReturnStatus status = FindVolume(name, volume); status != HVC_OK) return status;
  const std::vector<std::string> &modules = volume->modules.For(kClean, [&] { return ReadModules(*volume); });
  record.isClean = std::none_of(modules.begin(), modules.end(), [this](const std::string &module) {
    return ReadText(module, "nfit/flags").find("_fail") != std::string::npos;
  });
  return HVC_OK;
}

// A namespace of no size stands ready to be made.
PersistentMemory::RegionList PersistentMemory::ReadRegions(const Volume &volume) {
  RegionList regions;
  for (const std::string &device : volume.namespaces) {
    const Figure size = ReadFigure(device, "size");
    if (size == Figure(0) || (size.isAbsent() && !files_.Exists(HostPath(kDevices, "/", device)))) continue;
    const std::string uuid = ReadText(device, "uuid");
    const bool hasUuid = uuid.size() == kUuidLength;
    regions.push_back({.name = hasUuid && !IsKnownName(uuid, regions) ? uuid : device,
                       .device = device,
                       .hasUuid = hasUuid,
                       .size = Kept(size.IfAbsent(Figure::Unreadable()))});
  }
  return regions;
}

HVC_ReturnStatus PersistentMemory::Regions(std::string_view name, ParamList &list) {
  Volume *volume = nullptr;
  if (const HVC_ReturnStatus status = FindVolume(name, volume); status != HVC_OK) return status;
  for (const Region &region : volume->regions.For(kList, [&] { return ReadRegions(*volume); })) {
    if (const HVC_ReturnStatus status = list.Add(region.name); status != HVC_OK) return status;
  }
  return HVC_OK;
}

HVC_ReturnStatus PersistentMemory::FindRegion(std::string_view volumeName, std::string_view name, Volume *&volume,
                                              Region *&region) {
  if (const HVC_ReturnStatus status = FindVolume(volumeName, volume); status != HVC_OK) return status;
  RegionList &regions = volume->regions.Any([&] { return ReadRegions(*volume); });
  const auto found = std::find_if(regions.begin(), regions.end(), [name](const Region &r) { return r.name == name; });
  if (found == regions.end() || !files_.Exists(HostPath(kDevices, "/", found->device))) return HVC_NOT_FOUND;
  region = &*found;
  return HVC_OK;
}

HVC_ReturnStatus PersistentMemory::RegionInfo(std::string_view volumeName, std::string_view name,
                                              RegionRecord &record) {
  Volume *volume = nullptr;
  Region *region = nullptr;
  if (const HVC_ReturnStatus status = FindRegion(volumeName, name, volume, region); status != HVC_OK) return status;
  const Figure size = region->size.For(kInfo, [&] { return ReadFigure(region->device, "size"); });
  const Figure node = region->numaNode.For(kInfo, [&] { return ReadNumaNode(region->device); });
  const std::string mode = ReadText(region->device, "mode");
  record.size = size.Cell(HVC_KB_NONE);
  record.reservedBlocks = record.allocatedBlocks = BlocksUp(size).Cell(HVC_KB_NONE);
  record.flags = HVC_REGION_ALLOCATED;
  if (volume->isReadOnly.Any([&] { return ReadText(volume->device, "read_only") == "1"; })) {
    record.flags |= HVC_REGION_READ_ONLY;
  }
  // What is not left to programs to map is a disk.
  if (!mode.empty() && mode != "dax") record.flags |= HVC_REGION_BLOCK_DEVICE;
  if (region->hasUuid) record.flags |= HVC_REGION_PERSISTENT_RESERVATION;
  if (const uint64_t bit = node.Cell(64); bit < 64) record.numaAffinityMask = uint64_t{1} << bit;
  return HVC_OK;
}

HVC_ReturnStatus PersistentMemory::RegionNodes(std::string_view volumeName, std::string_view name, ParamList &list) {
  Volume *volume = nullptr;
  Region *region = nullptr;
  if (const HVC_ReturnStatus status = FindRegion(volumeName, name, volume, region); status != HVC_OK) return status;
  const Figure node = region->numaNode.For(kNodes, [&] { return ReadNumaNode(region->device); });
  return node.isAbsent() ? HVC_OK : list.Add(static_cast<int64_t>(node.Cell(0)));
}

HVC_ReturnStatus PersistentMemory::RegionNode(std::string_view volumeName, std::string_view name, int64_t numaNode,
                                              RegionNumaRecord &record) {
  Volume *volume = nullptr;
  Region *region = nullptr;
  if (const HVC_ReturnStatus status = FindRegion(volumeName, name, volume, region); status != HVC_OK) return status;
  const Figure node = region->numaNode.For(kNode, [&] { return ReadNumaNode(region->device); });
  if (numaNode < 0 || node != Figure(static_cast<uint64_t>(numaNode))) return HVC_NOT_FOUND;
  const Figure size = region->size.For(kNode, [&] { return ReadFigure(region->device, "size"); });
  record.numaNode = static_cast<uint32_t>(numaNode);
  record.allocatedBlocks = BlocksUp(size).Cell(HVC_KB_NONE);
  return HVC_OK;
}

HVC_ReturnStatus PersistentMemory::Extents(std::string_view name, ParamList &list) {
  Volume *volume = nullptr;
  const HVC_ReturnStatus status = FindVolume(name, volume);
  return status == HVC_OK ? list.Add(int64_t{0}) : status;
}

HVC_ReturnStatus PersistentMemory::Extent(std::string_view name, int64_t extent, ExtentRecord &record) {
  Volume *volume = nullptr;
  if (const HVC_ReturnStatus status = FindVolume(name, volume); status != HVC_OK) return status;
  if (extent != 0) return HVC_NOT_FOUND;
  const Figure size = volume->size.For(kExtent, [&] { return ReadFigure(volume->device, "size"); });
  const std::string resource = ReadText(volume->device, "resource");
  uint64_t start = 0;
  const Figure first = ParseHex(resource, start) ? Figure(start) : Figure::Unreadable();
  record.endBlock = (BlocksUp(size.IfAbsent(Figure::Unreadable())) - Figure(1)).Cell(0);
  record.startMPN = (first / kRecordPage).Cell(0);
  record.endMPN = ((first + size - Figure(1)) / kRecordPage).Cell(0);
  record.numaNode = ReadNumaNode(volume->device).Cell(HVC_KB_NONE);
  return HVC_OK;
}

}  // namespace platkit
