// The tree of a Linux host, read from the /proc and /sys below a root folder.
#ifndef PLATKIT_LINUX_LINUX_SOURCE_H
#define PLATKIT_LINUX_LINUX_SOURCE_H

#include <memory>

#include "platkit/linux/files/host_files.h"
#include "platkit/source.h"

namespace platkit {

// The host whose root folder is at `root`. Nothing is opened until a node asks for it.
std::unique_ptr<Source> OpenLinuxHost(const char *root);

// The host whose files these are.
std::unique_ptr<Source> OpenLinuxHost(HostFiles files);

// The same for a saved root folder: HVC_NOT_FOUND, HVC_NO_PERMISSION or HVC_IO_ERROR if there is no such folder.
[[nodiscard]] HVC_ReturnStatus OpenSavedRoot(const char *root, Writes writes, std::unique_ptr<Source> &source);

}  // namespace platkit

#endif  // PLATKIT_LINUX_LINUX_SOURCE_H
