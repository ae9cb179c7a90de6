// Preloaded into kestrel, makes of its cache file a root folder: kestrel has no option for that.
#include <dlfcn.h>

#include "platkit/nodal.h"

extern "C" HVC_ReturnStatus NODAL_UseCache(const char *path, uint32_t) {
  using UseCache = HVC_ReturnStatus (*)(const char *, uint32_t);
  const auto useCache = reinterpret_cast<UseCache>(dlsym(RTLD_NEXT, "NODAL_UseCache"));
  return useCache(path, NODAL_CACHE_ROOT_FOLDER);
}
