// Whether a PID still belongs to the same process.
#ifndef PLATKIT_LINUX_GROUPS_PROCESS_IDENTITY_H
#define PLATKIT_LINUX_GROUPS_PROCESS_IDENTITY_H

#include <cstdint>

#include "platkit/linux/kernel/process_status.h"

namespace platkit {

// True if the PID is still that of the process with this identity. Then everything that was read of the PID meanwhile
// belongs to this process, though the kernel reuses PIDs.
bool IsSameProcess(HostFiles &files, int64_t pid, const ProcessIdentity &identity);

}  // namespace platkit

#endif  // PLATKIT_LINUX_GROUPS_PROCESS_IDENTITY_H
