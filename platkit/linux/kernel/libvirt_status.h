// /run/libvirt/qemu/NAME.xml: what libvirt knows about a running guest.
//
// Only root can read these files. libvirt rewrites a guest's file whenever the guest's balloon changes, and removes it
// when the guest ends. libvirt may change the form of the files, so any part of it may be missing.
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
  Figure pollingSeconds;  // seconds between QEMU's queries of the guest's balloon driver; 0: no queries
  Figure hasBalloon;      // whether the guest has a balloon device
  Figure hasJob;          // whether the guest is being migrated, saved or dumped
};

// Parses a status file, or the description of a domain, which has neither PID nor job.
LibvirtStatus ParseLibvirtStatus(std::string_view text);

// Whether the host has a folder of status files.
bool HasLibvirtStatus(HostFiles &files);

// Reads the status file of a guest. All figures are absent if the file does not exist, if this user may not read it, or
// if users other than root can have written it.
LibvirtStatus ReadLibvirtStatus(HostFiles &files, std::string_view guestName);

}  // namespace platkit

#endif  // PLATKIT_LINUX_KERNEL_LIBVIRT_STATUS_H
