#include "platkit/linux/kernel/process_exe.h"

#include <climits>

namespace platkit {

// The link contains the file's path. If the file was removed or replaced after the process started it, the kernel
// appends " (deleted)".
std::string ReadProgramName(HostFiles &files, int64_t pid) {
  constexpr std::string_view kRemoved = " (deleted)";
  char buffer[PATH_MAX];
  std::string_view path;
  if (files.ReadLink(HostPath("proc/", pid, "/exe"), buffer, path) != HVC_OK) return {};
  path.remove_prefix(path.rfind('/') + 1);
  if (path.ends_with(kRemoved)) path.remove_suffix(kRemoved.size());
  return std::string(path);
}

}  // namespace platkit
