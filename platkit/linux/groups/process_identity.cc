#include "platkit/linux/groups/process_identity.h"

#include "platkit/linux/kernel/process_stat.h"

namespace platkit {

bool IsSameProcess(HostFiles &files, int64_t pid, const ProcessIdentity &identity) {
  const HostPath path("proc/", pid, "/status");
  if (files.IsKeptWhole(path, identity.inode)) return true;
  uint64_t inode = 0;
  const HVC_ReturnStatus status = files.Identify(path, inode);
  if (status == HVC_NOT_FOUND) return false;
  // If this user may not open the files of a process, no values were read from them.
  if (status != HVC_OK || identity.inode == 0) return true;
  // Two processes never have the same inode number. If the kernel has dropped the cached inode, the same process gets a
  // new number. The start time then tells whether it is the same process.
  return inode == identity.inode || ReadLatestStart(files, pid) <= identity.seenAt;
}

}  // namespace platkit
