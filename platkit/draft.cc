#include "platkit/draft.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace platkit {
namespace {

constexpr char kOwnDescriptors[] = "/proc/self/fd";

// Where the file really goes: behind links, so that a link stays one. A target that does not exist yet is itself, and
// so is a link that leads nowhere.
HVC_ReturnStatus Resolve(const std::string &path, std::string &target) {
  struct stat info;
  if (stat(path.c_str(), &info) != 0) {
    target = path;
    return errno == ENOENT ? HVC_OK : WriteStatus(errno);
  }
  // To rename over a device or a pipe would take it away from everybody else.
  if (!S_ISREG(info.st_mode)) return HVC_ALREADY_EXISTS;
  char *resolved = realpath(path.c_str(), nullptr);
  if (resolved == nullptr) return WriteStatus(errno);
  target = resolved;
  std::free(resolved);
  return HVC_OK;
}

}  // namespace

HVC_ReturnStatus WriteStatus(int error) {
  switch (error) {
    case ENOENT:
    case ENOTDIR: return HVC_NOT_FOUND;
    case EACCES:
    case EPERM:
    case EROFS: return HVC_NO_PERMISSION;
    case ENAMETOOLONG: return HVC_NAME_TOO_LONG;
    case ENOMEM: return HVC_NO_MEMORY;
    default: return HVC_WRITE_ERROR;
  }
}

Draft::~Draft() {
  if (fd_ >= 0) close(fd_);
  if (!path_.empty()) unlink(path_.c_str());
}

HVC_ReturnStatus Draft::Create(const std::string &path) {
  const HVC_ReturnStatus status = Resolve(path, target_);
  if (status != HVC_OK) return status;
  return CreateBesideTarget() ? HVC_OK : WriteStatus(errno);
}

HVC_ReturnStatus Draft::TakePlace() { return SyncAndRename() ? HVC_OK : WriteStatus(errno); }

bool Draft::CreateBesideTarget() {
  // Without /proc, it could not be given a name.
  if (access(kOwnDescriptors, F_OK) == 0) fd_ = open(Folder().c_str(), O_RDWR | O_TMPFILE | O_CLOEXEC, 0666);
  if (fd_ >= 0) return true;
  return TryNames([this](const char *path) {
    fd_ = open(path, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666);
    return fd_ >= 0;
  });
}

bool Draft::SyncAndRename() {
  if (fsync(fd_) != 0 || !GiveName()) return false;
  const int closed = close(fd_);
  fd_ = -1;
  if (closed != 0 || rename(path_.c_str(), target_.c_str()) != 0) return false;
  path_.clear();
  SyncFolder();
  return true;
}

bool Draft::GiveName() {
  if (!path_.empty()) return true;
  const std::string descriptor = std::string(kOwnDescriptors) + "/" + std::to_string(fd_);
  return TryNames(
      [&](const char *path) { return linkat(AT_FDCWD, descriptor.c_str(), AT_FDCWD, path, AT_SYMLINK_FOLLOW) == 0; });
}

// Tries names beside the target until one is free; false with errno if none is to be had.
template <typename Try>
bool Draft::TryNames(Try take) {
  constexpr int kMaxTries = 100;

  for (int i = 0; i < kMaxTries; ++i) {
    std::string path = target_ + ".new-" + std::to_string(arc4random());
    if (take(path.c_str())) {
      path_ = std::move(path);
      return true;
    }
    if (errno != EEXIST) break;
  }
  return false;
}

std::string Draft::Folder() const {
  const size_t slash = target_.rfind('/');
  return slash == std::string::npos ? "." : target_.substr(0, slash + 1);
}

// The file is in its place already; on a file system that cannot sync a folder, that is all there is to be had.
void Draft::SyncFolder() const {
  const int fd = open(Folder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  static_cast<void>(fsync(fd));
  close(fd);
}

}  // namespace platkit
