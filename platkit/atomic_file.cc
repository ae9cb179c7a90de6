#include "platkit/atomic_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "platkit/errno_status.h"

namespace platkit {
namespace {

constexpr char kOwnDescriptors[] = "/proc/self/fd";

HVC_ReturnStatus WriteStatus() { return StatusOfErrno(errno, HVC_WRITE_ERROR); }

// Follows symbolic links, so that a link is not replaced by a file. If the path does not exist or is a dangling link,
// the target is the path itself.
HVC_ReturnStatus Resolve(const std::string &path, std::string &target) {
  struct stat info;
  if (stat(path.c_str(), &info) != 0) {
    target = path;
    return errno == ENOENT ? HVC_OK : WriteStatus();
  }
  // A rename would replace a device or a pipe for all its users.
  if (!S_ISREG(info.st_mode)) return HVC_ALREADY_EXISTS;
  char *resolved = realpath(path.c_str(), nullptr);
  if (resolved == nullptr) return WriteStatus();
  target = resolved;
  std::free(resolved);
  return HVC_OK;
}

}  // namespace

AtomicFile::~AtomicFile() {
  if (fd_ >= 0) close(fd_);
  if (!temporary_.empty()) unlink(temporary_.c_str());
}

HVC_ReturnStatus AtomicFile::Create(const std::string &path) {
  const HVC_ReturnStatus status = Resolve(path, target_);
  if (status != HVC_OK) return status;
  return CreateBesideTarget() ? HVC_OK : WriteStatus();
}

HVC_ReturnStatus AtomicFile::Commit() { return SyncAndRename() ? HVC_OK : WriteStatus(); }

bool AtomicFile::CreateBesideTarget() {
  // An unnamed file gets its name through /proc.
  if (access(kOwnDescriptors, F_OK) == 0) fd_ = open(Folder().c_str(), O_RDWR | O_TMPFILE | O_CLOEXEC, 0666);
  if (fd_ >= 0) return true;
  return TryNames([this](const char *path) {
    fd_ = open(path, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666);
    return fd_ >= 0;
  });
}

bool AtomicFile::SyncAndRename() {
  if (fsync(fd_) != 0 || !GiveName()) return false;
  const int closed = close(fd_);
  fd_ = -1;
  if (closed != 0 || rename(temporary_.c_str(), target_.c_str()) != 0) return false;
  temporary_.clear();
  SyncFolder();
  return true;
}

bool AtomicFile::GiveName() {
  if (!temporary_.empty()) return true;
  const std::string descriptor = std::string(kOwnDescriptors) + "/" + std::to_string(fd_);
  return TryNames(
      [&](const char *path) { return linkat(AT_FDCWD, descriptor.c_str(), AT_FDCWD, path, AT_SYMLINK_FOLLOW) == 0; });
}

// Tries random names beside the target until one is free. On failure, errno is from the last attempt.
template <typename Try>
bool AtomicFile::TryNames(Try tryName) {
  constexpr int kMaxTries = 100;

  for (int i = 0; i < kMaxTries; ++i) {
    std::string path = target_ + ".new-" + std::to_string(arc4random());
    if (tryName(path.c_str())) {
      temporary_ = std::move(path);
      return true;
    }
    if (errno != EEXIST) break;
  }
  return false;
}

std::string AtomicFile::Folder() const {
  const size_t slash = target_.rfind('/');
  return slash == std::string::npos ? "." : target_.substr(0, slash + 1);
}

// Makes the rename itself durable. Failures are ignored: some file systems cannot sync a folder, and the file already
// has its name.
void AtomicFile::SyncFolder() const {
  const int fd = open(Folder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  static_cast<void>(fsync(fd));
  close(fd);
}

}  // namespace platkit
