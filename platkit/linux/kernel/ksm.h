// Pages that the kernel's same-page merging (KSM) shares.
#ifndef PLATKIT_LINUX_KERNEL_KSM_H
#define PLATKIT_LINUX_KERNEL_KSM_H

#include <cstdint>
#include <string_view>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"
#include "platkit/linux/kernel/page_size.h"
#include "platkit/records.h"

namespace platkit {

// In KB.
struct ProcessSharing {
  Figure merged;  // pages that are shared with equal ones; absent if this kernel does not tell
  Figure zero;    // pages that were given up for the page of zeros, and are in no resident set

  Figure Saved() const { return merged + zero; }
};

class PageSharing {
 public:
  PageSharing(HostFiles &files, PageSize &pageSize) : files_(files), pageSize_(pageSize) {}

  // Host-wide. A kernel without KSM shares nothing.
  void Fill(PShareStatsRecord &record);

  // What sharing saves, in KB; absent if this kernel does not tell.
  Figure SavedOnHost();
  ProcessSharing OfProcess(int64_t pid);

 private:
  Figure ReadPages(std::string_view name);

  HostFiles &files_;
  PageSize &pageSize_;
};

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_KSM_H
