// /proc/iomem: where the kernel's image is in physical memory.
#ifndef PLATKIT_LINUX_KERNEL_IOMEM_H
#define PLATKIT_LINUX_KERNEL_IOMEM_H

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

// Sizes in bytes. A part is absent if the file has no such line. It is unreadable for an ordinary user, because the
// kernel prints zeros as addresses for such users.
struct KernelImage {
  Figure code;    // Kernel code
  Figure rodata;  // Kernel rodata
  Figure data;    // Kernel data
  Figure bss;     // Kernel bss
};

KernelImage ReadKernelImage(HostFiles &files);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_IOMEM_H
