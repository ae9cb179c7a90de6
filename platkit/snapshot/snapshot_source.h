// The tree of a saved host, read from a snapshot file.
#ifndef PLATKIT_SNAPSHOT_SNAPSHOT_SOURCE_H
#define PLATKIT_SNAPSHOT_SNAPSHOT_SOURCE_H

#include <memory>

#include "platkit/source.h"

namespace platkit {

// Statuses as for NODAL_UseCache. `source` is set only on success.
[[nodiscard]] HVC_ReturnStatus OpenSnapshot(const char *path, std::unique_ptr<Source> &source);

}  // namespace platkit

#endif  // PLATKIT_SNAPSHOT_SNAPSHOT_SOURCE_H
