#include <utility>

#include "tools/nodal/top/screen.h"

namespace nodal::top {
namespace {

using enum Use;

struct BufferNames {
  std::string_view free, used;
};

// The columns of each buffer size, named as in buddy-stats. The sizes start at 4 KB, and each is twice the previous
// one.
constexpr BufferNames kBuffers[] = {
    {"4KBfree", "4KBused"},     {"8KBfree", "8KBused"},     {"16KBfree", "16KBused"},   {"32KBfree", "32KBused"},
    {"64KBfree", "64KBused"},   {"128KBfree", "128KBused"}, {"256KBfree", "256KBused"}, {"512KBfree", "512KBused"},
    {"1MBfree", "1MBused"},     {"2MBfree", "2MBused"},     {"4MBfree", "4MBused"},     {"8MBfree", "8MBused"},
    {"16MBfree", "16MBused"},   {"32MBfree", "32MBused"},   {"64MBfree", "64MBused"},   {"128MBfree", "128MBused"},
    {"256MBfree", "256MBused"}, {"512MBfree", "512MBused"}, {"1GBfree", "1GBused"},
};

constexpr Term BufferTerm(size_t size, uint32_t offset) {
  return {platkit::NodeId::system_buddy_comprehensive,
          static_cast<uint32_t>(offsetof(BuddyComprehensiveRecord, sizes) + size * sizeof(BuddySizeRecord)) + offset};
}

constexpr Term MemoryIn(uint32_t offset) {
  Term term = BufferTerm(0, offset);
  term.isBufferMemory = true;
  return term;
}

constexpr uint32_t kFree = offsetof(BuddySizeRecord, free);
constexpr uint32_t kUsed = offsetof(BuddySizeRecord, used);

constexpr bool IsShown(size_t size) { return size == 0 || size == 4 || size == 9 || size == 18; }

#define POOL(name, use)                                            \
  {                                                                \
#name, use, { TOP_FIELD(memory_lpage_nodeList_vmPools, name) } \
  }

// The columns of buddy-stats and lpool-stats.
constexpr auto kNodeColumns = [] {
  std::array<Column, 4 + 2 * std::size(kBuffers) + 12> columns = {{
      {.name = "memNode", .use = kSetting, .quantity = Quantity::kIdentifier, .meaning = "memory node"},
      {.name = "numaNode", .use = kSetting, .quantity = Quantity::kIdentifier, .meaning = "NUMA node"},
      {.name = "free",
       .use = kLevel,
       .terms = {MemoryIn(kFree)},
       .isDefault = true,
       .quantity = Quantity::kAmount,
       .meaning = "memory in free buffers of all sizes"},
      {.name = "used",
       .use = kLevel,
       .terms = {MemoryIn(kUsed)},
       .isDefault = true,
       .quantity = Quantity::kAmount,
       .meaning = "memory in used buffers of all sizes"},
      POOL(nrLPages, kLevel),
      POOL(nrFreeSPages, kLevel),
      POOL(nrSPageAllocs, kCounter),
      POOL(nrSPageFrees, kCounter),
      POOL(nrReapAttempts, kCounter),
      POOL(nrSPagesReaped, kCounter),
      POOL(nrDefragAttempts, kCounter),
      POOL(nrDefragCancelled, kCounter),
      POOL(nrDefragReaped, kCounter),
      POOL(nrLPagesDefragged, kCounter),
      POOL(peakDefragAttempts, kSetting),
      POOL(nrCachehit, kCounter),
  }};
  columns[4].isDefault = columns[5].isDefault = true;
  size_t next = 16;
  for (size_t size = 0; size < std::size(kBuffers); ++size)
    columns[next++] = {kBuffers[size].free, kLevel, {BufferTerm(size, kFree)}, {}, IsShown(size)};
  for (size_t size = 0; size < std::size(kBuffers); ++size)
    columns[next++] = {kBuffers[size].used, kLevel, {BufferTerm(size, kUsed)}};
  return columns;
}();

#undef POOL

}  // namespace

std::span<const Column> NodeColumns() { return kNodeColumns; }

}  // namespace nodal::top
