// query NAME ID: calls one getter and prints its status and its output.
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "src/groups/group_queries.h"
#include "src/groups/mem_clients.h"

namespace {

using kestrel::VmmAllocRecord;

// The value of an output before the call, to detect whether the call writes to it.
constexpr uint32_t kUntouched = 77;

HVC_ReturnStatus Leader(int64_t id) {
  uint32_t leader = kUntouched;
  const HVC_ReturnStatus status = kestrel::Kestrel_GroupGetGroupLeaderID(id, leader);
  std::printf("leader %" PRIu32 "\n", leader);
  return status;
}

HVC_ReturnStatus VmmAlloc(int64_t id) {
  VmmAllocRecord alloc = {.min = kUntouched, .max = kUntouched, .shares = kUntouched, .minLimit = kUntouched};
  const HVC_ReturnStatus status = kestrel::Kestrel_GroupGetVMMAlloc(id, alloc);
  std::printf("min %" PRIu64 " max %" PRIu64 " shares %" PRId32 " minLimit %" PRIu64 "\n", alloc.min, alloc.max,
              alloc.shares, alloc.minLimit);
  return status;
}

HVC_ReturnStatus VmmLeader(int64_t id) {
  uint32_t leader = kUntouched;
  const HVC_ReturnStatus status = kestrel::Kestrel_GetVmmLeaderID(static_cast<uint32_t>(id), leader);
  std::printf("vmm leader %" PRIu32 "\n", leader);
  return status;
}

HVC_ReturnStatus TotalCommon(int64_t id) {
  TotalCommonRecord stats = {};
  const HVC_ReturnStatus status = kestrel::Kestrel_MemClientGetTotalCommonStats(static_cast<uint32_t>(id), stats);
  std::printf("first byte %u\n", static_cast<unsigned>(stats.unread_0[0]));
  return status;
}

// Leaks a block of this size, for the sanitizers to find.
HVC_ReturnStatus Leak(int64_t size) {
  [[maybe_unused]] static void *volatile block;
  block = std::malloc(static_cast<size_t>(size));
  block = nullptr;
  return HVC_OK;
}

constexpr struct {
  const char *name;
  HVC_ReturnStatus (*make)(int64_t id);
} kQueries[] = {
    {"leader", Leader}, {"vmmAlloc", VmmAlloc}, {"vmmLeader", VmmLeader}, {"totalCommon", TotalCommon}, {"leak", Leak}};

}  // namespace

int main(int argc, char **argv) {
  for (const auto &query : kQueries) {
    if (argc == 3 && std::strcmp(argv[1], query.name) == 0) {
      const HVC_ReturnStatus status = query.make(std::strtol(argv[2], nullptr, 10));
      std::printf("status %#x\n", status);
      return EXIT_SUCCESS;
    }
  }
  return EXIT_FAILURE;
}
