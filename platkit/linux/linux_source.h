// The tree of a Linux host, read from the /proc and /sys below a root folder.
#ifndef PLATKIT_LINUX_LINUX_SOURCE_H
#define PLATKIT_LINUX_LINUX_SOURCE_H

#include <memory>

#include "platkit/linux/files/host_files.h"
#include "platkit/source.h"

namespace platkit {

// Opens the running host below the root folder `root`. Files are opened only when a node is read.
std::unique_ptr<Source> OpenLinuxHost(const char *root);

// Opens a host that is read through `files`.
std::unique_ptr<Source> OpenLinuxHost(HostFiles files);

// Opens a saved root folder. Returns HVC_NOT_FOUND, HVC_NO_PERMISSION or HVC_IO_ERROR if the folder cannot be opened.
[[nodiscard]] HVC_ReturnStatus OpenSavedRoot(const char *root, Writes writes, std::unique_ptr<Source> &source);

}  // namespace platkit

#endif  // PLATKIT_LINUX_LINUX_SOURCE_H
