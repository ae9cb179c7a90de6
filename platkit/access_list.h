// The POSIX access control list of a file: which other users and groups may access it.
//
// If a file has such a list, the group bits of its mode are the mask of the list and not the rights of the group.
#ifndef PLATKIT_ACCESS_LIST_H
#define PLATKIT_ACCESS_LIST_H

#include <string>

namespace platkit {

// Reads the list in the kernel's binary form. Sets `list` to an empty text if the file has no list. Returns false if
// the list cannot be read.
[[nodiscard]] bool ReadAccessList(int fd, std::string &list);

// Replaces the list of the file, or removes it if `list` is empty. Returns false on failure.
[[nodiscard]] bool WriteAccessList(int fd, const std::string &list);

}  // namespace platkit

#endif  // PLATKIT_ACCESS_LIST_H
