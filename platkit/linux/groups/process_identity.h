// Whether a PID still belongs to the same process.
#ifndef PLATKIT_LINUX_GROUPS_PROCESS_IDENTITY_H
#define PLATKIT_LINUX_GROUPS_PROCESS_IDENTITY_H

#include <cstdint>

#include "platkit/linux/kernel/process_status.h"

namespace platkit {

// True if the process with this identity still has the PID. The kernel reuses PIDs, so this confirms that everything
// read for the PID in the meantime belongs to this process.
bool IsSameProcess(HostFiles &files, int64_t pid, const ProcessIdentity &identity);

}  // namespace platkit

#endif  // PLATKIT_LINUX_GROUPS_PROCESS_IDENTITY_H
