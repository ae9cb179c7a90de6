// The POSIX access control list of a file: which other users and groups may access it.
//
// With such a list, the group bits of the file's mode are a limit of the list and not the rights of the group.
#ifndef PLATKIT_ACCESS_LIST_H
#define PLATKIT_ACCESS_LIST_H

#include <string>

namespace platkit {

// Reads the list in the kernel's form; empty if the file has none. Returns false if it cannot be read.
[[nodiscard]] bool ReadAccessList(int fd, std::string &list);

// Replaces the list of a file by that of another one; removes it if `list` is empty. Returns false if that fails.
[[nodiscard]] bool WriteAccessList(int fd, const std::string &list);

}  // namespace platkit

#endif  // PLATKIT_ACCESS_LIST_H
