// Writes a file that appears whole or not at all.
//
// The data goes to a new file in the target's folder. Commit syncs this file and renames it over the target. Where the
// file system supports unnamed files, the new file has no name until Commit, so nothing remains of it if the program is
// killed. The destructor removes an uncommitted file.
//
// The folder is opened once, and all files are opened relative to it. The new file replaces a symbolic link at the
// target's path and never follows it, so others cannot redirect the output by planting a link.
#ifndef PLATKIT_ATOMIC_FILE_H
#define PLATKIT_ATOMIC_FILE_H

#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>

#include "platkit/status.h"

namespace platkit {

// Who may read a new file. The umask may restrict this further.
enum class Readers { kOwner, kEveryone };

class AtomicFile {
 public:
  AtomicFile() = default;
  ~AtomicFile();
  AtomicFile(const AtomicFile &) = delete;
  AtomicFile &operator=(const AtomicFile &) = delete;

  // Creates the new file for `path`.
  //
  // If the target exists and only the user may write to the folder, the new file gets the older file's mode, owner,
  // group and access control list. Otherwise, others may have put the older file there, even if it belongs to the user:
  // by a rename or a hard link. The new file then belongs to the user and gets the older file's group. It is readable
  // only by those whom both `readers` and the older file's mode allow. If the older file has an access control list, or
  // if this list cannot be read, only the user may read the new file.
  //
  // HVC_ALREADY_EXISTS: `path` is or links to something other than a regular file, or is a link into /proc. Other
  // statuses as for StatusOfErrno, with HVC_WRITE_ERROR for other errors.
  [[nodiscard]] HVC_ReturnStatus Create(const std::string &path, Readers readers);

  // The descriptor of the new file; -1 before Create and after Commit.
  int fd() const { return fd_; }

  // Waits until the data is on the disk, which may take long. Statuses as for Commit.
  [[nodiscard]] HVC_ReturnStatus Sync();

  // Syncs the new file and renames it to the target. Replaces an existing file.
  //
  // Statuses as for StatusOfErrno, with HVC_WRITE_ERROR for other errors, such as a full disk.
  [[nodiscard]] HVC_ReturnStatus Commit();

 private:
  // The permissions of a new file that replaces an older one.
  struct Access {
    mode_t mode;
    uid_t owner;
    gid_t group;
    std::string list;  // see access_list.h
  };

  HVC_ReturnStatus OpenFolder(const std::string &path);
  HVC_ReturnStatus CheckTarget(mode_t newMode);
  HVC_ReturnStatus CheckLink() const;
  bool ReadListOfOlderFile(std::string &list) const;
  bool CreateNewFile(mode_t mode);
  bool SetOwner() const;
  bool SetAccess() const;
  bool Rename();
  bool GiveName();
  bool TryNames(const std::function<bool(const char *name)> &tryName);
  bool IsPrivateFolder() const;
  void SyncFolder() const;

  std::string name_;       // of the target, in the folder
  std::string temporary_;  // of the new file; empty while it has no name
  std::optional<Access> access_;
  int folder_ = -1;
  int fd_ = -1;
};

}  // namespace platkit

#endif  // PLATKIT_ATOMIC_FILE_H
