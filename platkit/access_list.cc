#include "platkit/access_list.h"

#include <sys/xattr.h>

#include <cerrno>

namespace platkit {
namespace {

constexpr char kAttribute[] = "system.posix_acl_access";
constexpr size_t kMaxSize = 65536;  // the kernel's limit for any attribute

// True if the error means that the file has no list, or that its file system does not support lists.
bool IsNone(int error) { return error == ENODATA || error == EOPNOTSUPP; }

}  // namespace

bool ReadAccessList(int fd, std::string &list) {
  list.resize(kMaxSize);
  const ssize_t size = fgetxattr(fd, kAttribute, list.data(), list.size());
  const int error = errno;
  list.resize(size < 0 ? 0 : static_cast<size_t>(size));
  return size >= 0 || IsNone(error);
}

bool WriteAccessList(int fd, const std::string &list) {
  if (list.empty()) return fremovexattr(fd, kAttribute) == 0 || IsNone(errno);
  return fsetxattr(fd, kAttribute, list.data(), list.size(), 0) == 0;
}

}  // namespace platkit
