#include "platkit/snapshot/format.h"

#include <xxhash.h>

namespace platkit::snapshot {

uint32_t Check(std::span<const std::byte> typeAndPayload) {
  return static_cast<uint32_t>(XXH3_64bits(typeAndPayload.data(), typeAndPayload.size()));
}

}  // namespace platkit::snapshot
