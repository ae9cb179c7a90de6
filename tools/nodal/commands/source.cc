#include "tools/nodal/commands/source.h"

#include "platkit/nodal.h"
#include "tools/nodal/snapshot/open_failure.h"

namespace nodal {
namespace {

void Use(const std::string &path, uint32_t kind) {
  const HVC_ReturnStatus status = NODAL_UseCache(path.c_str(), kind);
  if (status != HVC_OK) throw OpenFailure(path, status);
}

}  // namespace

void UseSource(const SourceOptions &source) {
  if (!source.cache.empty()) Use(source.cache, NODAL_CACHE_SNAPSHOT);
  if (!source.root.empty()) Use(source.root, NODAL_CACHE_ROOT_FOLDER);
}

}  // namespace nodal
