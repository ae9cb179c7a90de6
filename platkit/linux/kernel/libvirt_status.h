// /run/libvirt/qemu/NAME.xml: what libvirt knows about a running guest.
//
// Only root can read these files. libvirt rewrites a guest's file whenever the guest's balloon changes, and removes it
// when the guest ends. Their form is libvirt's own and may change, so every part of it may be missing.
#ifndef PLATKIT_LINUX_KERNEL_LIBVIRT_STATUS_H
#define PLATKIT_LINUX_KERNEL_LIBVIRT_STATUS_H

#include <cstdint>
#include <string_view>

#include "platkit/linux/files/host_files.h"
#include "platkit/linux/kernel/figure.h"

namespace platkit {

struct LibvirtStatus {
  int64_t pid = 0;        // of QEMU; 0 if unknown
  Figure memory;          // KB: the guest's memory with an empty balloon
  Figure currentMemory;   // KB: the memory that the balloon leaves to the guest
  Figure pollingSeconds;  // how often QEMU asks the guest's balloon driver for statistics; 0: never
  Figure hasBalloon;      // whether the guest has a balloon device
  Figure hasJob;          // whether it is being migrated, saved or dumped
};

// Parses a status file, or the description of a domain, which has neither PID nor job.
LibvirtStatus ParseLibvirtStatus(std::string_view text);

// Reads the status file of a guest. All figures are absent if there is no such file, if this user may not read it, or
// if others than root can have written it.
LibvirtStatus ReadLibvirtStatus(HostFiles &files, std::string_view guestName);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_LIBVIRT_STATUS_H
