// Preloaded into kestrel, this library makes it read a root folder, for which kestrel has no option. The folder is the
// argument of -c or, without -c, the environment variable ROOT_FOLDER. Only a folder from the variable can be written
// to. sleep() returns at once.
#include <dlfcn.h>

#include <cstdlib>

#include "platkit/nodal.h"

namespace {

template <typename Function>
Function *Next(const char *name) {
  return reinterpret_cast<Function *>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" HVC_ReturnStatus NODAL_UseCache(const char *path, uint32_t) {
  return Next<decltype(NODAL_UseCache)>("NODAL_UseCache")(path, NODAL_CACHE_ROOT_FOLDER);
}

// kestrel's first call of the library.
extern "C" HVC_ReturnStatus NODAL_CheckSig(char *kernelBuild, uint32_t size, const char **ownBuild) {
  if (const char *root = std::getenv("ROOT_FOLDER"); root != nullptr) {
    const HVC_ReturnStatus status =
        Next<decltype(NODAL_UseCache)>("NODAL_UseCache")(root, NODAL_CACHE_ROOT_FOLDER | NODAL_CACHE_WRITABLE);
    if (status != HVC_OK) return status;
  }
  return Next<decltype(NODAL_CheckSig)>("NODAL_CheckSig")(kernelBuild, size, ownBuild);
}

extern "C" PLATKIT_EXPORT unsigned sleep(unsigned) { return 0; }
