#include "platkit/snapshot/snapshot_source.h"

namespace platkit {

HVC_ReturnStatus OpenSnapshot(const char *, std::unique_ptr<Source> &) { return HVC_NOT_A_SNAPSHOT; }

}  // namespace platkit
