// Writes a file that appears whole or not at all.
//
// The data goes to a new file in the target's folder, is synced, and then renamed over the target. Where the file
// system supports files without names, the new file has none until Commit, so that nothing remains of it however the
// program ends. An uncommitted file is removed.
//
// The folder is opened once, and everything happens relative to it. A symbolic link at the target's place is replaced
// and never followed: others cannot redirect the output by planting a link.
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
  // A file that replaces an older one keeps its mode, owner, group and access control list if only the user may write
  // to the folder. Elsewhere, others can have put the older file there, even one of the user's: by a rename or a hard
  // link. The new file is then the user's, keeps the group, and may be read only by those whom both `readers` and the
  // older file's mode allow; if the older file has an access control list, only by the user.
  //
  // HVC_ALREADY_EXISTS: `path` is, or links to, something other than a regular file; or it is a link into /proc. Other
  // statuses as for StatusOfErrno, with HVC_WRITE_ERROR for other errors.
  [[nodiscard]] HVC_ReturnStatus Create(const std::string &path, Readers readers);

  // The descriptor of the new file; -1 before Create and after Commit.
  int fd() const { return fd_; }

  // Waits until the data is on the disk, which may take long. Statuses as for Commit.
  [[nodiscard]] HVC_ReturnStatus Sync();

  // Syncs the new file and renames it to the target, in place of a file that exists there.
  //
  // Statuses as for StatusOfErrno, with HVC_WRITE_ERROR for other errors: the disk is full, or failed.
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
