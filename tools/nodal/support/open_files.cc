#include "tools/nodal/support/open_files.h"

#include <sys/resource.h>

#include <algorithm>

namespace nodal {
namespace {

// An open file takes about 4 KB of kernel memory.
constexpr size_t kMaxKeptFiles = 10'000;
constexpr size_t kOtherFiles = 128;

}  // namespace

size_t OpenFilesToKeep() {
  rlimit limit;
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return 0;
  limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, std::max<rlim_t>(limit.rlim_cur, kMaxKeptFiles + kOtherFiles));
  static_cast<void>(setrlimit(RLIMIT_NOFILE, &limit));
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur <= kOtherFiles) return 0;
  return std::min<size_t>(limit.rlim_cur - kOtherFiles, kMaxKeptFiles);
}

}  // namespace nodal
