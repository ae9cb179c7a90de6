#include "platkit/snapshot/format.h"

#include <xxhash.h>

#include <cstring>

namespace platkit::snapshot {

uint32_t Check(std::span<const std::byte> bytes) {
  return static_cast<uint32_t>(XXH3_64bits(bytes.data(), bytes.size()));
}

HVC_ReturnStatus FailureIn(const Value &value) {
  if (value.type != ValueType::kRecord || value.payload.size() != kFailureBytes) return HVC_SNAPSHOT_DAMAGED;
  HVC_ReturnStatus failure;
  std::memcpy(&failure, value.payload.data(), sizeof failure);
  return failure == HVC_OK ? HVC_SNAPSHOT_DAMAGED : failure;
}

}  // namespace platkit::snapshot
