#include "platkit/linux/records/heap_records.h"

#include <algorithm>
#include <array>

#include "platkit/linux/kernel/figure_files.h"
#include "platkit/linux/records/printable.h"

namespace platkit {
namespace {

constexpr size_t kMostName = sizeof HeapStatsRecord{}.name - 1;

// The last word of a text, which is taken off it.
std::string_view TakeLastWord(std::string_view &text) {
  text = text.substr(0, text.find_last_not_of(' ') + 1);
  const size_t blank = text.find_last_of(' ');
  const std::string_view word = blank == std::string_view::npos ? text : text.substr(blank + 1);
  text.remove_suffix(word.size());
  return word;
}

Figure ParseCount(std::string_view word) {
  uint64_t value = 0;
  return ParseNumber(word, value) ? Figure(value) : Figure::Unreadable();
}

Figure Product(Figure a, Figure b) {
  const uint64_t factor = b.Cell(0);
  return b == Figure(factor) ? a * factor : Figure::Unreadable();
}

// A line "name active total size perSlab pagesPerSlab : tunables ... : slabdata activeSlabs slabs shared".
struct CacheLine {
  std::string name;
  Figure active, total, objectSize, pagesPerSlab, slabs;
};

// The name may have blanks in it, so the numbers after it are taken from their end. A line without them is no cache's.
bool ParseCache(std::string_view line, CacheLine &cache) {
  const size_t tunables = line.find(" : tunables");
  const size_t slabData = line.find(" : slabdata");
  if (line.starts_with('#') || tunables == std::string_view::npos) return false;
  std::string_view start = line.substr(0, tunables);
  cache.pagesPerSlab = ParseCount(TakeLastWord(start));
  TakeLastWord(start);
  cache.objectSize = ParseCount(TakeLastWord(start));
  cache.total = ParseCount(TakeLastWord(start));
  cache.active = ParseCount(TakeLastWord(start));
  start = start.substr(0, std::min(start.find_last_not_of(' ') + 1, kMostName));
  cache.name.assign(start);
  std::transform(cache.name.begin(), cache.name.end(), cache.name.begin(), Printable);
  std::string_view data = slabData == std::string_view::npos ? std::string_view() : line.substr(slabData + 11);
  data = data.substr(0, data.find(':'));
  std::array<std::string_view, 3> words;
  for (size_t i = 0; i < words.size(); ++i) {
    data.remove_prefix(std::min(data.find_first_not_of(' '), data.size()));
    words[i] = data.substr(0, data.find(' '));
    data.remove_prefix(words[i].size());
  }
  cache.slabs = ParseCount(words[1]);
  return !cache.name.empty();
}

uint32_t Percent(uint64_t part, uint64_t whole) {
  return whole == 0 ? 0 : static_cast<uint32_t>(static_cast<double>(part) / static_cast<double>(whole) * 100);
}

// Sizes have 32 bits, of which all ones say that a size is not known. A heap that is larger shows as the most whole
// pages that fit, with its parts made smaller alike.
constexpr uint64_t kMostSize = UINT32_MAX - (kRecordPage - 1);

void FillSizes(uint64_t size, uint64_t overhead, uint64_t avail, HeapStatsRecord &record) {
  record.pctFreeOfCur = Percent(avail, size);
  const double scale = size > kMostSize ? static_cast<double>(kMostSize) / static_cast<double>(size) : 1;
  const auto cell = [scale](uint64_t bytes) { return static_cast<uint32_t>(static_cast<double>(bytes) * scale); };
  record.size = static_cast<uint32_t>(std::min(size, kMostSize));
  record.dlMallocOvhd = cell(std::min(overhead, size));
  record.avail = cell(std::min(avail, size));
}

}  // namespace

HVC_ReturnStatus Heaps::List(ParamList &list) {
  if (const HVC_ReturnStatus status = Read(); status != HVC_OK) return status;
  list.Expect(heaps_.size());
  for (const Heap &heap : heaps_) {
    if (const HVC_ReturnStatus status = list.Add(heap.name); status != HVC_OK) return status;
  }
  return HVC_OK;
}

HVC_ReturnStatus Heaps::Stats(std::string_view name, HeapStatsRecord &record) {
  const Heap *known = Find(name);
  if (!isRead_ || (known != nullptr && known->given)) {
    if (const HVC_ReturnStatus status = Read(); status != HVC_OK) return status;
  }
  Heap *heap = Find(name);
  if (heap == nullptr) return HVC_NOT_FOUND;
  heap->given = true;
  heap->name.copy(record.name, kMostName);
  record.dynGrow = 1;
  record.numRanges = heap->slabs.Cell32(0);
  record.avgAllocSize = heap->objectSize.Cell32(0);
  const Figure figures[] = {heap->size, heap->objects, heap->avail};
  if (std::find(std::begin(figures), std::end(figures), Figure::Unreadable()) == std::end(figures)) {
    FillSizes(heap->size.Cell(0), (heap->size - heap->objects).Cell(0), heap->avail.Cell(0), record);
  } else {
    record.size = record.dlMallocOvhd = record.avail = record.pctFreeOfCur = UINT32_MAX;
  }
  return HVC_OK;
}

HVC_ReturnStatus Heaps::Read() {
  isRead_ = false;
  heaps_.clear();
  byName_.clear();
  LineReader lines(files_, HostPath("proc/slabinfo"));
  for (std::string_view line; lines.Next(line);)
    TakeCache(line);
  if (lines.status() != HVC_OK) return lines.status();
  isRead_ = true;
  return HVC_OK;
}

void Heaps::TakeCache(std::string_view line) {
  CacheLine cache;
  if (!ParseCache(line, cache)) return;
  const auto [found, isNew] = byName_.try_emplace(cache.name, heaps_.size());
  if (isNew) heaps_.push_back({.name = cache.name, .objectSize = cache.objectSize});
  Heap &heap = heaps_[found->second];
  heap.slabs = heap.slabs + cache.slabs;
  heap.size = heap.size + Product(cache.slabs, cache.pagesPerSlab) * pageSize_.Bytes();
  heap.objects = heap.objects + Product(cache.total, cache.objectSize);
  heap.avail = heap.avail + Product(cache.total - cache.active, cache.objectSize);
}

Heaps::Heap *Heaps::Find(std::string_view name) {
  const auto found = byName_.find(std::string(name));
  return found == byName_.end() ? nullptr : &heaps_[found->second];
}

}  // namespace platkit
