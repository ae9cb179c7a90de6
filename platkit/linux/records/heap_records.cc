#include "platkit/linux/records/heap_records.h"

#include <algorithm>

#include "platkit/linux/files/printable.h"

namespace platkit {
namespace {

constexpr size_t kMaxName = sizeof HeapStatsRecord{}.name - 1;

Figure Product(Figure a, Figure b) {
  const uint64_t factor = b.Cell(0);
  return b == Figure(factor) ? a * factor : Figure::Unreadable();
}

uint32_t Percent(uint64_t part, uint64_t whole) {
  return whole == 0 ? 0 : static_cast<uint32_t>(static_cast<double>(part) / static_cast<double>(whole) * 100);
}

// Sizes have 32 bits, and all ones means unavailable. A heap that is too large gets the largest multiple of a page that
// fits, and its parts are scaled down in proportion.
constexpr uint64_t kMaxSize = UINT32_MAX - (kRecordPage - 1);

void FillSizes(uint64_t size, uint64_t overhead, uint64_t avail, HeapStatsRecord &record) {
  record.pctFreeOfCur = Percent(avail, size);
  const double scale = size > kMaxSize ? static_cast<double>(kMaxSize) / static_cast<double>(size) : 1;
  const auto cell = [scale](uint64_t bytes) { return static_cast<uint32_t>(static_cast<double>(bytes) * scale); };
  record.size = static_cast<uint32_t>(std::min(size, kMaxSize));
  record.dlMallocOvhd = cell(std::min(overhead, size));
  record.avail = cell(std::min(avail, size));
}

}  // namespace

HVC_ReturnStatus HeapRecords::List(ParamList &list) {
  const Heaps &all = Read();
  if (all.status != HVC_OK) return all.status;
  list.Expect(all.heaps.size());
  for (const Heap &heap : all.heaps) {
    if (const HVC_ReturnStatus status = list.Add(heap.name); status != HVC_OK) return status;
  }
  return HVC_OK;
}

HVC_ReturnStatus HeapRecords::Stats(std::string_view name, HeapStatsRecord &record) {
  const Heaps &all = Read();
  if (all.status != HVC_OK) return all.status;
  const auto found = all.byName.find(std::string(name));
  if (found == all.byName.end()) return HVC_NOT_FOUND;
  const Heap &heap = all.heaps[found->second];
  heap.name.copy(record.name, kMaxName);
  record.dynGrow = 1;
  record.numRanges = heap.slabs.Cell32(0);
  record.avgAllocSize = heap.objectSize.Cell32(0);
  record.numReqsPerGrowth = heap.objectsPerSlab.Cell32(0);
  const Figure figures[] = {heap.size, heap.objects, heap.freeObjects};
  if (std::ranges::find(figures, Figure::Unreadable()) == std::end(figures)) {
    FillSizes(heap.size.Cell(0), (heap.size - heap.objects).Cell(0), heap.freeObjects.Cell(0), record);
  } else {
    record.size = record.dlMallocOvhd = record.avail = record.pctFreeOfCur = UINT32_MAX;
  }
  return HVC_OK;
}

// To write slabinfo, the kernel walks the lists of all caches, so the file of a sampled host is read only once a
// minute.
const HeapRecords::Heaps &HeapRecords::Read() {
  const auto read = [this] { return Merge(ReadSlabinfo(files_)); };
  if (!files_.isSampled()) return heaps_.Get(files_.clock(), read);
  return heaps_.GetIfChanged(files_.clock(), std::chrono::minutes(1), Clock::Time::min(), read);
}

HeapRecords::Heaps HeapRecords::Merge(const Slabinfo &info) {
  Heaps all = {.status = info.status, .heaps = {}, .byName = {}};
  for (const SlabCache &cache : info.caches) {
    std::string name = PrintableName(cache.name, kMaxName);
    const auto [found, isNew] = all.byName.try_emplace(name, all.heaps.size());
    if (isNew) {
      all.heaps.push_back(
          {.name = std::move(name), .objectSize = cache.objectSize, .objectsPerSlab = cache.objectsPerSlab});
    }
    Heap &heap = all.heaps[found->second];
    heap.slabs = heap.slabs + cache.slabs;
    heap.size = heap.size + Product(cache.slabs, cache.pagesPerSlab) * pageSize_.Bytes();
    heap.objects = heap.objects + Product(cache.objects, cache.objectSize);
    heap.freeObjects = heap.freeObjects + Product(cache.objects - cache.activeObjects, cache.objectSize);
  }
  return all;
}

}  // namespace platkit
