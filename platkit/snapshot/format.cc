#include "platkit/snapshot/format.h"

#include <xxhash.h>

namespace platkit::snapshot {

uint32_t Check(std::span<const std::byte> bytes) {
  return static_cast<uint32_t>(XXH3_64bits(bytes.data(), bytes.size()));
}

}  // namespace platkit::snapshot
