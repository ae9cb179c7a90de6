#include "platkit/linux/files/folder_reader.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platkit/errno_status.h"

namespace platkit {

FolderReader::FolderReader(HostFiles &files, const HostPath &path)
    : reach_(files.reach()), status_(files.OpenFolder(path, folder_, mustRewind_)) {}

bool FolderReader::HasNoFolders() const {
  // A folder without subfolders has two links: its name in its parent, and its own ".".
  struct stat about;
  return status_ == HVC_OK && reach_ == Reach::kHost && fstat(folder_->get(), &about) == 0 && about.st_nlink == 2;
}

bool FolderReader::Next(Entry &entry) {
  while (next_ < end_ || Fill()) {
    const auto *found = reinterpret_cast<const dirent64 *>(buffer_ + next_);
    next_ += found->d_reclen;
    const std::string_view name = found->d_name;
    if (name == "." || name == "..") continue;
    entry = {.name = name, .inode = found->d_ino, .isFolder = found->d_type == DT_DIR};
    // Some file systems do not store the type in folder entries; a saved root may be on one.
    if (found->d_type == DT_UNKNOWN) {
      struct stat about;
      entry.isFolder =
          fstatat(folder_->get(), found->d_name, &about, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(about.st_mode);
    }
    return true;
  }
  return false;
}

// Returns false after the last entry and on failure.
bool FolderReader::Fill() {
  if (status_ != HVC_OK) return false;
  if (mustRewind_) lseek(folder_->get(), 0, SEEK_SET);
  mustRewind_ = false;
  const ssize_t got = getdents64(folder_->get(), buffer_, sizeof buffer_);
  if (got < 0) status_ = StatusOfErrno(errno);
  next_ = 0;
  end_ = got > 0 ? static_cast<size_t>(got) : 0;
  return end_ > 0;
}

}  // namespace platkit
