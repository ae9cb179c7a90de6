// The current source, and the operations of nodal.h that select a source and compare its definitions.
#include "platkit/source.h"

#include <memory>

#include "platkit/api/answer.h"
#include "platkit/definitions.h"
#include "platkit/history/history_source.h"
#include "platkit/linux/linux_source.h"
#include "platkit/nodal.h"
#include "platkit/snapshot/snapshot_source.h"

namespace platkit {
namespace {

std::unique_ptr<Source> currentSource;

// A snapshot file takes precedence over a moment of a history with the same path.
HVC_ReturnStatus OpenSaved(const char *path, std::unique_ptr<Source> &source) {
  const HVC_ReturnStatus status = OpenSnapshot(path, source);
  return status == HVC_NOT_FOUND ? OpenMoment(path, source) : status;
}

HVC_ReturnStatus OpenSource(const char *path, uint32_t flags, std::unique_ptr<Source> &source) {
  switch (flags) {
    case NODAL_CACHE_SNAPSHOT: return OpenSaved(path, source);
    case NODAL_CACHE_ROOT_FOLDER: return OpenSavedRoot(path, Writes::kRefused, source);
    case NODAL_CACHE_ROOT_FOLDER | NODAL_CACHE_WRITABLE: return OpenSavedRoot(path, Writes::kTaken, source);
    default: return HVC_BAD_PARAM;
  }
}

}  // namespace

Source &CurrentSource() {
  if (currentSource == nullptr) currentSource = OpenLinuxHost("/");
  return *currentSource;
}

void UseSource(std::unique_ptr<Source> source) { currentSource = std::move(source); }

}  // namespace platkit

extern "C" {

HVC_ReturnStatus NODAL_UseCache(const char *path, uint32_t flags) {
  if (path == nullptr) return HVC_BAD_PARAM;
  return platkit::Answer([&] {
    std::unique_ptr<platkit::Source> source;
    const HVC_ReturnStatus status = platkit::OpenSource(path, flags, source);
    if (status == HVC_OK) platkit::UseSource(std::move(source));
    return status;
  });
}

HVC_ReturnStatus NODAL_CheckSig(char *kernelBuild, uint32_t size, const char **ownBuild) {
  if (kernelBuild == nullptr || size == 0 || ownBuild == nullptr) return HVC_BAD_PARAM;
  return platkit::Answer([&] {
    const platkit::Definitions &own = platkit::OwnDefinitions();
    const platkit::Definitions &read = platkit::CurrentSource().definitions();
    const size_t length = read.build.copy(kernelBuild, size - 1);
    kernelBuild[length] = '\0';
    *ownBuild = own.build.c_str();
    return read.signature == own.signature ? HVC_OK : HVC_DEFINITIONS_DIFFER;
  });
}

}  // extern "C"
