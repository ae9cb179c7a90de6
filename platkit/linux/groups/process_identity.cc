#include "platkit/linux/groups/process_identity.h"

#include "platkit/linux/kernel/process_stat.h"

namespace platkit {

bool IsSameProcess(HostFiles &files, int64_t pid, const ProcessIdentity &identity) {
  uint64_t inode = 0;
  const HVC_ReturnStatus status = files.Identify(HostPath("proc/", pid, "/status"), inode);
  if (status == HVC_NOT_FOUND) return false;
  // Nothing was read of a process whose files this user may not open.
  if (status != HVC_OK || identity.inode == 0) return true;
  // Two processes never have the same inode number. A process gets a new one when the kernel drops its cached inode;
  // then its start tells.
  return inode == identity.inode || ReadLatestStart(files, pid) <= identity.seenAt;
}

}  // namespace platkit
