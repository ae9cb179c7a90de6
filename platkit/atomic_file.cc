#include "platkit/atomic_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string_view>

#include "platkit/access_list.h"
#include "platkit/errno_status.h"
#include "platkit/linux/files/file_descriptor.h"

namespace platkit {
namespace {

constexpr char kOwnDescriptors[] = "/proc/self/fd";
constexpr mode_t kGroupBits = S_IRWXG;
constexpr mode_t kAllBits = S_IRWXU | S_IRWXG | S_IRWXO;

HVC_ReturnStatus WriteStatus() { return StatusOfErrno(errno, HVC_WRITE_ERROR); }

mode_t ModeFor(Readers readers) { return readers == Readers::kEveryone ? 0644 : 0600; }

}  // namespace

AtomicFile::~AtomicFile() {
  if (fd_ >= 0) close(fd_);
  if (!temporary_.empty()) unlinkat(folder_, temporary_.c_str(), 0);
  if (folder_ >= 0) close(folder_);
}

HVC_ReturnStatus AtomicFile::Create(const std::string &path, Readers readers) {
  const mode_t mode = ModeFor(readers);
  HVC_ReturnStatus status = OpenFolder(path);
  if (status == HVC_OK) status = CheckTarget(mode);
  if (status != HVC_OK) return status;
  // Commit gives the new file the permissions in access_. Until then, only the user may read it.
  return CreateNewFile(access_ ? 0600 : mode) ? HVC_OK : WriteStatus();
}

HVC_ReturnStatus AtomicFile::Sync() { return fsync(fd_) == 0 ? HVC_OK : WriteStatus(); }

HVC_ReturnStatus AtomicFile::Commit() {
  const HVC_ReturnStatus status = Sync();
  if (status != HVC_OK) return status;
  if (!SetAccess() || !GiveName() || !Rename()) return WriteStatus();
  SyncFolder();
  return HVC_OK;
}

HVC_ReturnStatus AtomicFile::OpenFolder(const std::string &path) {
  const size_t slash = path.rfind('/');
  const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
  folder_ = open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
  if (folder_ < 0) return WriteStatus();
  name_ = path.substr(slash == std::string::npos ? 0 : slash + 1);
  if (path.empty()) return HVC_NOT_FOUND;
  return name_.empty() || name_ == "." || name_ == ".." ? HVC_ALREADY_EXISTS : HVC_OK;
}

HVC_ReturnStatus AtomicFile::CheckTarget(mode_t newMode) {
  struct stat older;
  if (fstatat(folder_, name_.c_str(), &older, AT_SYMLINK_NOFOLLOW) != 0) {
    return errno == ENOENT ? HVC_OK : WriteStatus();
  }
  if (S_ISLNK(older.st_mode)) return CheckLink();
  // A rename would replace a device or a pipe for all its users.
  if (!S_ISREG(older.st_mode)) return HVC_ALREADY_EXISTS;
  std::string list;
  const bool isListKnown = ReadListOfOlderFile(list);
  const mode_t mode = older.st_mode & (isListKnown ? kAllBits : S_IRWXU);
  if (IsPrivateFolder()) {
    access_ = {.mode = mode, .owner = older.st_uid, .group = older.st_gid, .list = std::move(list)};
  } else {
    const mode_t kept = list.empty() ? newMode : newMode & S_IRWXU;
    access_ = {.mode = mode & kept, .owner = geteuid(), .group = older.st_gid, .list = {}};
  }
  return HVC_OK;
}

bool AtomicFile::ReadListOfOlderFile(std::string &list) const {
  const FileDescriptor older(openat(folder_, name_.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  return older.isOpen() && ReadAccessList(older.get(), list);
}

// A link to a device is not replaced, because other programs use the link. A link into /proc is not replaced either:
// /dev/stdout is one, even if standard output is a regular file.
HVC_ReturnStatus AtomicFile::CheckLink() const {
  struct stat info;
  if (fstatat(folder_, name_.c_str(), &info, 0) == 0 && !S_ISREG(info.st_mode)) return HVC_ALREADY_EXISTS;
  char text[sizeof kOwnDescriptors];
  constexpr std::string_view kProc = "/proc/";
  const ssize_t length = readlinkat(folder_, name_.c_str(), text, sizeof text);
  if (length < 0) return WriteStatus();
  return std::string_view(text, static_cast<size_t>(length)).starts_with(kProc) ? HVC_ALREADY_EXISTS : HVC_OK;
}

bool AtomicFile::CreateNewFile(mode_t mode) {
  // An unnamed file gets its name through /proc.
  if (access(kOwnDescriptors, F_OK) == 0) fd_ = openat(folder_, ".", O_RDWR | O_TMPFILE | O_CLOEXEC, mode);
  if (fd_ >= 0) return true;
  return TryNames([this, mode](const char *name) {
    fd_ = openat(folder_, name, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode);
    return fd_ >= 0;
  });
}

// Sets the owner and the group. Returns whether the file has the older file's group. Makes no call if both are right
// already: filters of system calls, such as those of systemd, can refuse a call even if it changes nothing.
bool AtomicFile::SetOwner() const {
  struct stat file;
  if (fstat(fd_, &file) == 0 && file.st_uid == access_->owner && file.st_gid == access_->group) return true;
  return fchown(fd_, access_->owner, access_->group) == 0 || fchown(fd_, static_cast<uid_t>(-1), access_->group) == 0;
}

// If the new file could not get the older file's group, its own group must not get the rights of that group. If it
// could not get the access control list, only the user gets rights: the group bits were the mask of the list, and the
// bits for others would apply to users whom the list excludes.
bool AtomicFile::SetAccess() const {
  if (!access_) return true;
  const bool hasGroup = SetOwner();
  mode_t mode = hasGroup ? access_->mode : access_->mode & ~kGroupBits;
  const bool hasList = (hasGroup || access_->list.empty()) && WriteAccessList(fd_, access_->list);
  if (!hasList) mode &= S_IRWXU;
  return fchmod(fd_, mode) == 0;
}

bool AtomicFile::Rename() {
  const int closed = close(fd_);
  fd_ = -1;
  if (closed != 0 || renameat(folder_, temporary_.c_str(), folder_, name_.c_str()) != 0) return false;
  temporary_.clear();
  return true;
}

bool AtomicFile::GiveName() {
  if (!temporary_.empty()) return true;
  const std::string descriptor = std::string(kOwnDescriptors) + "/" + std::to_string(fd_);
  return TryNames(
      [&](const char *name) { return linkat(AT_FDCWD, descriptor.c_str(), folder_, name, AT_SYMLINK_FOLLOW) == 0; });
}

// Tries short random names until one is free: a name made from a long target name could be too long. On failure, errno
// is from the last attempt.
bool AtomicFile::TryNames(const std::function<bool(const char *name)> &tryName) {
  constexpr int kMaxTries = 100;

  for (int i = 0; i < kMaxTries; ++i) {
    std::string name = ".new-" + std::to_string(arc4random());
    if (tryName(name.c_str())) {
      temporary_ = std::move(name);
      return true;
    }
    if (errno != EEXIST) break;
  }
  return false;
}

bool AtomicFile::IsPrivateFolder() const {
  struct stat folder;
  return fstat(folder_, &folder) == 0 && folder.st_uid == geteuid() && (folder.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

// Makes the rename itself durable. Ignores failures: some file systems cannot sync a folder, and the file is already in
// place.
void AtomicFile::SyncFolder() const {
  const int folder = openat(folder_, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder < 0) return;
  static_cast<void>(fsync(folder));
  close(folder);
}

}  // namespace platkit
