// Same-page merging (KSM): /sys/kernel/mm/ksm for the host, /proc/PID/ksm_stat for a process.
#ifndef PLATKIT_LINUX_KERNEL_KSM_H
#define PLATKIT_LINUX_KERNEL_KSM_H

#include <cstdint>
#include <string_view>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// Reads a file of /sys/kernel/mm/ksm, such as "pages_sharing", in pages. Absent if this kernel has no such file.
Figure ReadKsmPages(HostFiles &files, std::string_view file);

// The figures of a process, in pages. Only root may read those of another user's process.
struct ProcessKsm {
  Figure merged;  // ksm_merging_pages of ksm_stat; before Linux 6.4, the file ksm_merging_pages; absent before 5.19
  Figure zero;    // ksm_zero_pages of ksm_stat: replaced by the kernel's page of zeros; absent before 6.4
};

ProcessKsm ReadProcessKsm(HostFiles &files, int64_t pid);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_KSM_H
